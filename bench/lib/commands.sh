# The commands the bench times, by id: genetrain's and their peers'. Sourced by bench/run.sh.
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154  # settings and results shared with bench/run.sh
# shellcheck disable=SC2016  # the backquotes in SHOWN are Markdown

# Sets CMD (the argument list), OUT (where standard output goes) and SHOWN (the command as the
# table shows it) for a command id on input $2. Outputs go to $scratch/out, which is emptied
# before every run; the commands that write one file per record write into $KEEP instead (see
# fresh_keep in timing.sh).
command_for() {
  local id=$1 in=$2 o=$scratch/out
  OUT=/dev/null
  case $id in
    cat) CMD=(cat "$in") SHOWN='cat F > /dev/null' ;;
    stat) CMD=("$bin" --stat "$o/stat.txt" --seq "$in") SHOWN='genetrain --stat out.txt --seq F' ;;
    gc) CMD=("$bin" --gc "" --seq "$in") SHOWN='genetrain --gc "" --seq F' ;;
    stat_fasta) CMD=("$bin" --stat_fasta "" --seq "$in") SHOWN='genetrain --stat_fasta "" --seq F' ;;
    count_substring_n)
      CMD=("$bin" --count_substring_n "" --seq "$in")
      SHOWN='genetrain --count_substring_n "" --seq F' ;;
    count_substring_atcg)
      CMD=("$bin" --count_substring_atcg "" --seq "$in" --max_nnn_substring 10)
      SHOWN='genetrain --count_substring_atcg "" --seq F --max_nnn_substring 10' ;;
    clean_join)
      CMD=("$bin" --clean_join "$o/joined.txt" --seq "$in" --GAP_FILLER NNNNNNNNNN --MAX_N_SUBSTRING 100)
      SHOWN='genetrain --clean_join out --seq F --GAP_FILLER NNNNNNNNNN --MAX_N_SUBSTRING 100' ;;
    clean)
      CMD=("$bin" --clean "" --seq "$in" --out_clean "$o/clean.txt" --out_masked "$o/masked.txt" --GAP_FILLER NNNNNNNNNN)
      SHOWN='genetrain --clean "" --seq F --out_clean a --out_masked b --GAP_FILLER NNNNNNNNNN' ;;
    split) CMD=("$bin" --split "$KEEP/part" --seq "$in") SHOWN='genetrain --split base --seq F' ;;
    clean_fasta)
      CMD=("$bin" --clean_fasta "$in" --clean_fasta_index "$o/index.txt" --clean_fasta_out "$o/renamed.fa"
        --clean_fasta_label seq)
      SHOWN='genetrain --clean_fasta F --clean_fasta_index i --clean_fasta_out out --clean_fasta_label seq' ;;
    mask)
      CMD=("$bin" --mask "$(mask_intervals "$in")" --seq "$(one_record "$in")" --out "$o/masked.fa")
      SHOWN='genetrain --mask M --seq F1 --out out' ;;
    seqkit_stats) CMD=(seqkit stats -a -j 1 "$in") SHOWN='seqkit stats -a -j 1 F' ;;
    seqkit_fx2tab) CMD=(seqkit fx2tab -n -l -g -B N "$in") SHOWN='seqkit fx2tab -n -l -g -B N F' ;;
    seqkit_seq_s)
      CMD=(seqkit seq -s -w 0 "$in") OUT=$o/seq.txt SHOWN='seqkit seq -s -w 0 F > out' ;;
    seqkit_seq) CMD=(seqkit seq -w 0 "$in") OUT=$o/seq.fa SHOWN='seqkit seq -w 0 F > out' ;;
    seqkit_split2) CMD=(seqkit split2 -s 1 -O "$KEEP/split2" "$in") SHOWN='seqkit split2 -s 1 -O dir F' ;;
    seqkit_replace)
      CMD=(seqkit replace -p '.+' -r 'seq.{nr}' -w 0 "$in") OUT=$o/renamed.fa
      SHOWN="seqkit replace -p '.+' -r 'seq.{nr}' -w 0 F > out" ;;
    bedtools_maskfasta)
      CMD=(bedtools maskfasta -fi "$(one_record "$in")" -bed "$(mask_intervals "$in").bed" -fo "$o/masked.fa")
      SHOWN='bedtools maskfasta -fi F1 -bed M.bed -fo out' ;;
    *) gene_command_for "$id" "$in" "$o" ;;
  esac
}

# The gene commands of command_for, on genome $2 and the gene set $genes.
gene_command_for() {
  local id=$1 in=$2 o=$3
  local stops=(--TAA_ 1 --TGA_ 1 --TAG_ 1) starts=(--ATG_ 1 --GTG_ 1 --TTG_ 1)
  case $id in
    orf)
      CMD=("$bin" --orf "$o/orf.txt" --seq "$in" "${starts[@]}" "${stops[@]}" --MIN_ORF_SIZE 84)
      SHOWN='genetrain --orf out --seq G --ATG_ 1 --GTG_ 1 --TTG_ 1 --TAA_ 1 --TGA_ 1 --TAG_ 1 --MIN_ORF_SIZE 84' ;;
    getorf)
      CMD=(getorf -sequence "$in" -outseq "$o/getorf.fa" -find 1 -minsize 90)
      SHOWN='getorf -sequence G -outseq out -find 1 -minsize 90' ;;
    long_orfs)
      CMD=("$glimmer/long-orfs" -n -t 1.15 "$in" "$o/long-orfs.txt") SHOWN='long-orfs -n -t 1.15 G out' ;;
    parse)
      CMD=("$bin" --parse --seq "$in" --geneset "$genes" --cod "$o/cod.txt" --non "$o/non.txt" "${stops[@]}")
      SHOWN='genetrain --parse --seq G --geneset S --cod c --non n --TAA_ 1 --TGA_ 1 --TAG_ 1' ;;
    pre_start)
      CMD=("$bin" --pre_start "$o/pre.txt" --seq "$in" --geneset "$genes" --PRE_START_WIDTH 20
        --PRE_START_RELATIVE_POS 3 "${stops[@]}")
      SHOWN='genetrain --pre_start p --seq G --geneset S --PRE_START_WIDTH 20 --PRE_START_RELATIVE_POS 3 --TAA_ 1 --TGA_ 1 --TAG_ 1' ;;
    stat_non)
      CMD=("$bin" --STAT_NON_VS_ALL --seq "$in" --geneset "$genes")
      SHOWN='genetrain --STAT_NON_VS_ALL --seq G --geneset S' ;;
    orf_per_seq)
      CMD=("$bin" --ORF_PER_SEQ --seq "$in" --geneset "$genes" "${starts[@]}" "${stops[@]}" --MIN_ORF_SIZE 84)
      SHOWN='genetrain --ORF_PER_SEQ --seq G --geneset S --ATG_ 1 --GTG_ 1 --TTG_ 1 --TAA_ 1 --TGA_ 1 --TAG_ 1 --MIN_ORF_SIZE 84' ;;
    *) model_command_for "$id" "$in" "$o" ;;
  esac
}

# The model commands of command_for, on genome $2 and the gene set $genes; the floor reads the
# coding training file $cod_file, build-icm the same genes as FASTA records ($cod_fasta).
model_command_for() {
  local id=$1 in=$2 o=$3 order
  local stops=(--TAA_ 1 --TGA_ 1 --TAG_ 1)
  case $id in
    mkmod)
      CMD=("$bin" --mkmod "$o/model.mod" --par "$root/examples/ecoli.par" --seq "$in" --geneset "$genes")
      SHOWN='genetrain --mkmod m --par examples/ecoli.par --seq G --geneset S' ;;
    mkchain*)
      order=${id#mkchain}
      CMD=("$bin" --mkchain --chain_cod "$o/cod.chain" --chain_non "$o/non.chain" --order "$order"
        --seq "$in" --geneset "$genes" "${stops[@]}")
      SHOWN="genetrain --mkchain --chain_cod c --chain_non n --order $order --seq G --geneset S --TAA_ 1 --TGA_ 1 --TAG_ 1" ;;
    prodigal_train)
      CMD=(prodigal -p single -i "$in" -t "$o/train.trn") OUT=$o/prodigal.txt
      SHOWN='prodigal -p single -i G -t train.trn' ;;
    build_icm)
      CMD=(sh -c '"$1" -r "$2" < "$3"' build-icm "$glimmer/build-icm" "$o/genes.icm" "$cod_fasta")
      SHOWN='build-icm -r out.icm < genes.fa (the genes of S)' ;;
    kmer_floor) CMD=("$floor" "$cod_file") SHOWN='kmer_floor c (c = coding file of --parse)' ;;
    *) say "unknown command id $id"; exit 1 ;;
  esac
}

# The one-record form of a generated input, for --mask: one header line, then every sequence
# line of the input (line widths as they are). Written once next to the input.
one_record() {
  local in=$1 file=${1%.fa}.one.fa
  if [ ! -s "$file" ]; then
    { echo '>joined'; grep -v '^>' "$in"; } > "$file.part"
    mv "$file.part" "$file"
  fi
  printf '%s\n' "$file"
}

# The intervals for --mask on the one-record input: about one per 20 kb, 1 to 5000 bases long,
# from awk's generator with a fixed seed; and the same as a BED file (0-based starts) for
# bedtools. Written once next to the input.
mask_intervals() {
  local in=$1 file=${1%.fa}.mask.txt one letters
  if [ ! -s "$file" ] || [ ! -s "$file.bed" ]; then
    one=$(one_record "$in")
    # Every byte of the sequence lines is a letter: the file less the header and the line ends.
    letters=$(($(stat -c %s "$one") - 8 - ($(wc -l < "$one") - 1)))
    awk -v letters="$letters" -v bed="$file.bed.part" 'BEGIN {
        srand(20261121)
        for (i = 0; i < letters / 20000; i++) {
          first = 1 + int(rand() * (letters - 5000))
          last = first + int(rand() * 5000)
          print first, last
          printf "joined\t%d\t%d\n", first - 1, last > bed
        }
      }' > "$file.part"
    mv "$file.bed.part" "$file.bed"
    mv "$file.part" "$file"
  fi
  printf '%s\n' "$file"
}
