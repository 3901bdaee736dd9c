# The bad-input matrix: one line per command line that works on the files of fixtures/.
#   entry NAME "ARGUMENTS" "FILE OPTIONS" "NUMERIC OPTIONS" "OUTPUT OPTIONS"
# Every file option's file is replaced in turn by a missing, an empty, a directory, a binary, a
# NUL-holding and a CRLF variant; every numeric option is given "abc", "-1", "1e99",
# "4294967296" and an empty value; every output is sent in turn into a missing folder, onto a
# read-only file, onto a directory and to /dev/full. Arguments are split at blanks (no argument
# holds one).

entry stat "--stat out.txt --seq multi.fa" "--seq" "--GC_PRECISION" "--stat"
entry gc "--gc out.txt --seq multi.fa" "--seq" "--GC_PRECISION" "--gc"
entry par "--stat out.txt --seq multi.fa --par params.par" "--par" "" ""
entry clean_join "--clean_join out.txt --seq multi.fa --log log.txt" "--seq" \
  "--MIN_CONTIG_SIZE --MAX_N_SUBSTRING --MIN_SEQ_SIZE" "--clean_join --log"
entry clean "--clean --seq multi.fa --out_clean clean.txt --out_masked masked.txt" "--seq" \
  "--MIN_CONTIG_SIZE --MIN_SEQ_SIZE --REPLACE_N_STRING" "--out_clean --out_masked"
entry split "--split part --seq multi.fa --SPLIT_SIZE 5" "--seq" \
  "--SPLIT_SIZE --MIN_SPLIT_SIZE --letters_per_line --max_nnn_substring --nnn_margin" "--split"
entry mask "--mask mask.txt --seq in.fa --out out.fa" "--mask --seq" "" "--out"
entry clean_fasta \
  "--clean_fasta multi.fa --clean_fasta_index index.txt --clean_fasta_out out.fa --clean_fasta_label L" \
  "--clean_fasta" "" "--clean_fasta_out --clean_fasta_index"
entry stat_fasta "--stat_fasta --seq multi.fa" "--seq" "" ""
entry count_substring_n "--count_substring_n --seq multi.fa" "--seq" "" ""
entry count_substring_atcg "--count_substring_atcg --seq multi.fa --max_nnn_substring 2" "--seq" \
  "--max_nnn_substring" ""
entry clean_coding \
  "--CLEAN_CODING out.txt --seq cod.fa --PRINT_LABEL 1 --MKCHAIN_L_MARGING 3 --MKCHAIN_R_MARGING 3 --MIN_COD 9 --TAA_ 1" \
  "--seq" "--PRINT_LABEL --MKCHAIN_L_MARGING --MKCHAIN_R_MARGING --MIN_COD --TAA_" "--CLEAN_CODING"
entry gene_set_stat "--GENE_SET_STAT --geneset g.txt" "--geneset" "" ""
entry parse "--parse --seq s.fa --geneset g.txt --cod cod.out --non non.out" "--seq --geneset" \
  "--MIN_COD --MIN_NON --EXCLUDE_PARTIAL --COD_L_MARGIN --COD_R_MARGIN --SEPARATE_COD" "--cod --non"
entry intergenic "--intergenic --seq p.fa --geneset pairs.txt --non non.out" "--seq --geneset" \
  "--MIN_NON --COD_L_MARGIN --COD_R_MARGIN --shift_zero" "--non"
entry stat_non_vs_all "--STAT_NON_VS_ALL --seq s.fa --geneset g.txt" "--seq --geneset" "" ""
entry pre_start \
  "--pre_start out.fa --seq s.fa --geneset g.txt --PRE_START_WIDTH 4 --PRE_START_RELATIVE_POS 1" \
  "--seq --geneset" \
  "--PRE_START_WIDTH --PRE_START_RELATIVE_POS --PRE_START_INTERGENIC --PRE_START_LINES" "--pre_start"
entry orf "--orf out.txt --seq s.fa --ATG_ 1 --TAA_ 1 --TGA_ 1 --TAG_ 1 --MIN_ORF_SIZE 3" "--seq" \
  "--MIN_ORF_SIZE --ORF_MARGIN_LEFT --ORF_MARGIN_RIGHT --ORF_OUT --ATG_ --TAA_" "--orf"
entry orf_per_seq \
  "--ORF_PER_SEQ out.txt --seq s.fa --geneset g.txt --ATG_ 1 --TAA_ 1 --MIN_ORF_SIZE 3" \
  "--seq --geneset" "--MIN_ORF_SIZE --ORF_OUT" ""
entry mkchain \
  "--mkchain --chain_cod cod.out --chain_non non.out --order 1 --seq genome.fa --geneset genes.txt" \
  "--seq --geneset" \
  "--order --MIN_COD --MIN_NON --MKCHAIN_L_MARGING --MKCHAIN_R_MARGING --MKCHAIN_PSEUDOCOUNTS --MKCHAIN_PRECISION --order_non" "--chain_cod --chain_non"
entry mkmod "--mkmod out.mod --par model.par --seq genome.fa --geneset genes.txt" \
  "--par --seq --geneset" \
  "--ORDM --ATG_ --MINC --MAXC --MAXN --NDEC --CDEC --CDCD --CD1P --CD2P --MIN_COD --MIN_NON --EXCLUDE_PARTIAL --START_PRECISION --START_PSEUDOCOUNTS --SEPARATE_COD --RANDOM_NONCOD --MKCHAIN_L_MARGING --MKCHAIN_R_MARGING --MKCHAIN_PSEUDOCOUNTS --MKCHAIN_PRECISION" "--mkmod"
entry mkmod_files "--mkmod out.mod --par model.par --cod cod.txt --non non.txt" "--cod --non" \
  "--ORDM --MKCHAIN_PSEUDOCOUNTS --MKCHAIN_PRECISION" "--mkmod"
entry combine "--combine out.mod --first c.mod --second c.mod" "--first --second" "" "--combine"
entry gibbs "--gibbs gibbs.txt --seq pre.fa --mod m.mod --log run.log" "--gibbs --seq --mod" \
  "--GIBBS_PRECISION_MAT --GIBBS_PRECISION_DUR --GIBBS_PSEUDOCOUNTS_MAT --GIBBS_PSEUDOCOUNTS_DUR" "--mod --log"
entry compare "--compare out.txt --source g.txt --target g.txt" "--source --target" \
  "--COMPARE_PRECISION --COMPARE_START --COMPARE_END" "--compare"
