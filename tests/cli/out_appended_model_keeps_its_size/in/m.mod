PHMM phmm_1
NAME gibbs_test
ORDM 0
ATG_ 0.800
GTG_ 0.150
TTG_ 0.050
CTG_ 0
TAA_ 1
TAG_ 1
TGA_ 1
MINC 90
MAXC 2500
MAXN 8000
NDEC 120
CDEC 130
CDCD 0.6
CD1P 0.9
CD2P 0.1
COD1 
0.30000 0.20000 0.25000
0.20000 0.30000 0.25000
0.30000 0.20000 0.25000
0.20000 0.30000 0.25000

COD2 
0.25000 0.25000 0.25000
0.25000 0.25000 0.25000
0.25000 0.25000 0.25000
0.25000 0.25000 0.25000

NONC 
0.30000
0.20000
0.20000
0.30000

# padding line 01 of an earlier model file, to near 1 KB
# padding line 02 of an earlier model file, to near 1 KB
# padding line 03 of an earlier model file, to near 1 KB
# padding line 04 of an earlier model file, to near 1 KB
# padding line 05 of an earlier model file, to near 1 KB
# padding line 06 of an earlier model file, to near 1 KB
# padding line 07 of an earlier model file, to near 1 KB
# padding line 08 of an earlier model file, to near 1 KB
# padding line 09 of an earlier model file, to near 1 KB
# padding line 10 of an earlier model file, to near 1 KB
# padding line 1