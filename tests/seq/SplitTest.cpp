// Tests arrive with their code.
