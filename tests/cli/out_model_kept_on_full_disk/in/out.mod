PHMM earlier
