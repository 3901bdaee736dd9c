# The bad-input matrix: one line per command line that works on the files of fixtures/.
#   entry NAME "ARGUMENTS" "FILE OPTIONS" "NUMERIC OPTIONS" "OUTPUT OPTIONS"
# Every file option's file is replaced in turn by a missing, an empty, a directory, a binary, a
# NUL-holding and a CRLF variant; every numeric option is given "abc", "-1", "1e99",
# "4294967296" and an empty value; every output is sent in turn into a missing folder, onto a
# read-only file, onto a directory and to /dev/full. Arguments are split at blanks (no argument
# holds one).
#
# Every command line runs at least once as it stands. The variants run once per distinct path
# that reads a file, gets a number or writes an output, on the entry named below; the other
# options taking that path (listed after the carrier) would only repeat its transcript. A new
# option needs variants here only when it takes a path of its own: another reader or parser,
# another getter, a failure that is reported and ignored instead of ending the command, a check
# at another point of the messages, or a check of the command's own on the value.
#
# Files (loader, then what parses the bytes):
#   block reader, counting sink ........... stat --seq (also gc)
#   block reader, stdout written as read .. stat_fasta --seq (also count_substring_n,
#                                           count_substring_atcg)
#   block reader, sink writing an output .. clean_fasta --clean_fasta
#   whole file, records, joined ........... clean --seq (also clean_join)
#   whole file, records, one required ..... mask --seq
#   whole file, records, none is an error . split --seq
#   whole file, case-keeping records ...... clean_coding --seq
#   whole file, records as base codes ..... gibbs --seq
#   whole file as one coded sequence ...... mkmod --seq (also --seq of parse, intergenic,
#                                           stat_non_vs_all, pre_start, orf, orf_per_seq,
#                                           mkchain, and --cod, --non of mkmod_files)
#   gene set, one column .................. gene_set_stat --geneset (also --geneset of parse,
#                                           stat_non_vs_all, pre_start, orf_per_seq, mkchain,
#                                           mkmod, and --source, --target of compare)
#   gene set, two columns (--shift_zero) .. intergenic --geneset
#   parameter file, then model checks ..... mkmod --par (also par)
#   model file ............................ combine --first (also --second)
#   Gibbs sampler output .................. gibbs --gibbs
#   mask intervals, own message ........... mask --mask
#   model appended to ..................... gibbs --mod
# Numbers (getter; F: a failure ends the command, R: reported, default kept, command goes on):
#   uint32 F, before any input ............ gibbs --GIBBS_PRECISION_MAT, --GIBBS_PRECISION_DUR
#                                           (each its own text's room for the digits) (also
#                                           --GC_PRECISION, --MIN_CONTIG_SIZE,
#                                           --COMPARE_PRECISION, --COD_L_MARGIN,
#                                           --GIBBS_PSEUDOCOUNTS_*)
#   uint32 F, after the inputs ............ pre_start --PRE_START_WIDTH (also
#                                           --PRE_START_RELATIVE_POS, orf_per_seq --MIN_ORF_SIZE)
#   uint32 F, after output on stdout ...... orf --MIN_ORF_SIZE
#   uint32 required ....................... clean_coding --MKCHAIN_L_MARGING (also
#                                           --MKCHAIN_R_MARGING, --MIN_COD)
#   int32 F, before any input ............. clean_join --MAX_N_SUBSTRING (also clean_join
#                                           --MIN_SEQ_SIZE, --COD_R_MARGIN, split
#                                           --MIN_SPLIT_SIZE, --letters_per_line,
#                                           --max_nnn_substring, count_substring_atcg)
#   int32 F, then the command's minimum ... clean --MIN_SEQ_SIZE
#   int32 F, not negative ................. split --SPLIT_SIZE (also --nnn_margin)
#   int32 F, while loading the gene set ... intergenic --shift_zero
#   int32 F, after the inputs ............. pre_start --PRE_START_LINES (also orf_per_seq
#                                           --ORF_OUT)
#   int32 F, after output on stdout ....... orf --ORF_MARGIN_LEFT (also --ORF_MARGIN_RIGHT,
#                                           --ORF_OUT)
#   int32 R, once per chain, then order ... mkchain --order_non
#   bool F, before any input .............. orf --TAA_ (also --ATG_, clean --REPLACE_N_STRING,
#                                           compare --COMPARE_START, --COMPARE_END)
#   bool F, after the inputs .............. pre_start --PRE_START_INTERGENIC
#   bool required ......................... clean_coding --PRINT_LABEL
#   bool R, stop codon list ............... clean_coding --TAA_
#   bool R, gene commands' stop codons ..... parse --TAA_ (read with the sequence; also --TAG_,
#                                           --TGA_ of every gene command but orf)
#   Genome's uint32 R, before the inputs .. parse --MIN_COD (also --MIN_NON of parse,
#                                           intergenic, mkchain)
#   Genome's bool R, before the inputs .... parse --SEPARATE_COD (also --EXCLUDE_PARTIAL)
#   Genome's uint32 R, after the inputs ... mkmod --MIN_COD (also --MIN_NON, --START_PRECISION,
#                                           --START_PSEUDOCOUNTS)
#   Genome's bool R, after the inputs ..... mkmod --SEPARATE_COD (also --EXCLUDE_PARTIAL)
#   bool R, after the chains .............. mkmod --RANDOM_NONCOD
#   chain tuning uint32 R, once per chain . mkchain --MKCHAIN_L_MARGING (margins, also
#                                           --MKCHAIN_R_MARGING and mkmod's),
#                                           mkchain --MKCHAIN_PRECISION (checked before the
#                                           chain file), mkmod --MKCHAIN_PRECISION (checked
#                                           before the model; also mkmod_files') (also
#                                           --MKCHAIN_PSEUDOCOUNTS everywhere)
#   presence and digits, own messages ..... mkchain --order
#   model check, digits, then the order ... mkmod --ORDM (also mkmod_files)
#   model check, digits, copied ........... mkmod --MINC (also --MAXC, --MAXN)
#   model check, not negative, then start . mkmod --ATG_
#   model check, not negative, copied ..... mkmod --NDEC (also --CDEC, --CDCD, --CD1P, --CD2P)
# Outputs:
#   report replaced ....................... stat --stat (also gc, compare, orf, mkmod, combine)
#   file replaced after another is done ... parse --non (also --cod, intergenic --non,
#                                           --CLEAN_CODING, --pre_start, --clean_fasta_index,
#                                           mkchain --chain_non)
#   numbered pieces, one file each ........ split --split
#   streamed, second of a one-pass pair ... clean --out_masked (also --out_clean, --clean_join,
#                                           mkchain --chain_cod)
#   streamed from the block reader's sink . clean_fasta --clean_fasta_out
#   appended, before the main output ...... clean_join --log
#   report appended ....................... gibbs --mod (also gibbs --log)
#   quiet open, own message ............... mask --out

entry stat "--stat out.txt --seq multi.fa" "--seq" "" "--stat"
entry gc "--gc out.txt --seq multi.fa" "" "" ""
entry par "--stat out.txt --seq multi.fa --par params.par" "" "" ""
entry clean_join "--clean_join out.txt --seq multi.fa --log log.txt" "" "--MAX_N_SUBSTRING" "--log"
entry clean "--clean --seq multi.fa --out_clean clean.txt --out_masked masked.txt" "--seq" \
  "--MIN_SEQ_SIZE" "--out_masked"
entry split "--split part --seq multi.fa --SPLIT_SIZE 5" "--seq" "--SPLIT_SIZE" "--split"
entry mask "--mask mask.txt --seq in.fa --out out.fa" "--mask --seq" "" "--out"
entry clean_fasta \
  "--clean_fasta multi.fa --clean_fasta_index index.txt --clean_fasta_out out.fa --clean_fasta_label L" \
  "--clean_fasta" "" "--clean_fasta_out"
entry stat_fasta "--stat_fasta --seq multi.fa" "--seq" "" ""
entry count_substring_n "--count_substring_n --seq multi.fa" "" "" ""
entry count_substring_atcg "--count_substring_atcg --seq multi.fa --max_nnn_substring 2" "" "" ""
entry clean_coding \
  "--CLEAN_CODING out.txt --seq cod.fa --PRINT_LABEL 1 --MKCHAIN_L_MARGING 3 --MKCHAIN_R_MARGING 3 --MIN_COD 9 --TAA_ 1" \
  "--seq" "--PRINT_LABEL --MKCHAIN_L_MARGING --TAA_" ""
entry gene_set_stat "--GENE_SET_STAT --geneset g.txt" "--geneset" "" ""
entry parse "--parse --seq s.fa --geneset g.txt --cod cod.out --non non.out" "" \
  "--MIN_COD --SEPARATE_COD --TAA_" "--non"
entry intergenic "--intergenic --seq p.fa --geneset pairs.txt --non non.out" "--geneset" \
  "--shift_zero" ""
entry stat_non_vs_all "--STAT_NON_VS_ALL --seq s.fa --geneset g.txt" "" "" ""
entry pre_start \
  "--pre_start out.fa --seq s.fa --geneset g.txt --PRE_START_WIDTH 4 --PRE_START_RELATIVE_POS 1" \
  "" "--PRE_START_WIDTH --PRE_START_INTERGENIC --PRE_START_LINES" ""
entry orf "--orf out.txt --seq s.fa --ATG_ 1 --TAA_ 1 --TGA_ 1 --TAG_ 1 --MIN_ORF_SIZE 3" "" \
  "--MIN_ORF_SIZE --ORF_MARGIN_LEFT --TAA_" ""
entry orf_per_seq \
  "--ORF_PER_SEQ out.txt --seq s.fa --geneset g.txt --ATG_ 1 --TAA_ 1 --MIN_ORF_SIZE 3" "" "" ""
entry mkchain \
  "--mkchain --chain_cod cod.out --chain_non non.out --order 1 --seq genome.fa --geneset genes.txt" \
  "" "--order --MKCHAIN_L_MARGING --MKCHAIN_PRECISION --order_non" ""
entry mkmod "--mkmod out.mod --par model.par --seq genome.fa --geneset genes.txt" "--par --seq" \
  "--ORDM --ATG_ --MINC --NDEC --MIN_COD --SEPARATE_COD --RANDOM_NONCOD --MKCHAIN_PRECISION" ""
entry mkmod_files "--mkmod out.mod --par model.par --cod cod.txt --non non.txt" "" "" ""
entry combine "--combine out.mod --first c.mod --second c.mod" "--first" "" ""
entry gibbs "--gibbs gibbs.txt --seq pre.fa --mod m.mod --log run.log" "--gibbs --seq --mod" \
  "--GIBBS_PRECISION_MAT --GIBBS_PRECISION_DUR" "--mod"
entry compare "--compare out.txt --source g.txt --target g.txt" "" "" ""
