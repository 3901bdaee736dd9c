an earlier model, kept
