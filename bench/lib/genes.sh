# The gene and model commands on the E. coli genome of examples/. Sourced by bench/run.sh.
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154  # settings and results shared with bench/run.sh
# shellcheck disable=SC2016  # the backquotes in echo texts are Markdown

# Gene commands: on the E. coli MG1655 chromosome with its gene set, next to EMBOSS getorf (and
# Glimmer's long-orfs, for information), then on the chromosome repeated $gene_copies times in
# one sequence, where each command should take about that many times as long.

# Sets GENOME and genes to the chromosome repeated $1 times and its gene set, each copy's genes
# moved by the copy's start; written once into $data/genes/.
gene_inputs() {
  local copies=$1 dir=$data/genes length
  local one=$dir/ecoli_x1.fa
  GENOME=$dir/ecoli_x$copies.fa
  genes=$dir/ecoli_x$copies.genes
  mkdir -p "$dir"
  if [ ! -s "$one" ] || [ ! -s "$dir/ecoli_x1.genes" ]; then
    gzip -dc "$root/examples/ecoli_mg1655.genes.gz" > "$dir/ecoli_x1.genes"
    gzip -dc "$root/examples/ecoli_mg1655.fasta.gz" > "$one.part" && mv "$one.part" "$one"
  fi
  [ "$copies" = 1 ] && return 0
  [ -s "$GENOME" ] && [ -s "$genes" ] && return 0
  say "writing $GENOME and its gene set"
  length=$(awk '!/^>/ { n += length($0) } END { printf "%.0f", n }' "$one")
  {
    printf '>ecoli_mg1655_x%d\n' "$copies"
    for ((k = 0; k < copies; k++)); do tail -n +2 "$one"; done
  } > "$GENOME.part"
  # Six columns again, with the '<' and '>' marks of open ends kept; ids get the copy number.
  awk -v copies="$copies" -v len="$length" '
    function moved(v, by, mark) {
      mark = substr(v, 1, 1)
      if (mark == "<" || mark == ">") return mark (substr(v, 2) + by)
      return v + by
    }
    { line[NR] = $0 }
    END {
      OFS = "\t"
      for (k = 0; k < copies; k++)
        for (i = 1; i <= NR; i++) {
          $0 = line[i]
          $1 = (k + 1) "_" $1; $3 = moved($3, k * len); $4 = moved($4, k * len)
          print
        }
    }' "$dir/ecoli_x1.genes" > "$genes"
  mv "$GENOME.part" "$GENOME"
}

gene_table_head() {
  local mb=$1 count=$2 title=$3 ratio=$4
  echo
  echo "### $title: $mb MB, $count genes"
  echo
  echo "| command (G = genome, S = gene set) | wall s | CPU s | peak RSS MB | MB/s | $ratio | target |"
  echo '|---|---|---|---|---|---|---|'
}

run_genes() {
  local runs=$gene_runs in mb count
  gene_inputs 1
  in=$GENOME
  mb=$(calc "printf \"%.1f\", $(stat -c %s "$in") / 1e6")
  count=$(wc -l < "$genes")
  say "gene commands on $in: $mb MB, $count genes"
  gene_table_head "$mb" "$count" "Gene commands on E. coli MG1655" "wall ratio"
  run_pair ecoli "$in" orf getorf "$mb"
  run_pair ecoli "$in" orf long_orfs "$mb"
  run_alone ecoli "$in" "$mb" "" "" parse pre_start stat_non orf_per_seq
  echo
  check_genes_ecoli "$in"
  [ -n "$gene_copies" ] || return 0
  runs=${BENCH_RUNS:-3}
  local copies=$gene_copies limit
  limit=$(calc "printf \"%g\", $copies * 25 / 22")
  gene_inputs "$copies"
  in=$GENOME
  mb=$(calc "printf \"%.1f\", $(stat -c %s "$in") / 1e6")
  count=$(wc -l < "$genes")
  say "gene commands on $in: $mb MB, $count genes"
  cat "$in" > /dev/null
  gene_table_head "$mb" "$count" "Gene commands on E. coli x $copies, one sequence" "x E. coli wall"
  run_alone "x$copies" "$in" "$mb" ecoli "$limit" orf getorf parse pre_start stat_non orf_per_seq
  echo
  check_genes_copies "$in" "$copies"
}

# Sets GENE_COUNTS to what the gene commands find on genome $1: coding lines of --parse, regions
# of --pre_start, codons counted by --orf, ORFs listed, and the --STAT_NON_VS_ALL line.
gene_counts() {
  local in=$1 o=$scratch/out cod pre codons orfs stat
  rm -rf "$o" && mkdir -p "$o"
  command_for parse "$in"
  "${CMD[@]}" 2> /dev/null || true
  cod=$(grep -vc '^>' "$o/cod.txt" 2> /dev/null || true)
  command_for pre_start "$in"
  "${CMD[@]}" 2> /dev/null || true
  pre=$(grep -c '^>' "$o/pre.txt" 2> /dev/null || true)
  command_for orf "$in"
  codons=$("${CMD[@]}" 2> /dev/null | awk '{ printf "%s%s", sep, $3; sep = "/" }' || true)
  orfs=$(grep -c . "$o/orf.txt" 2> /dev/null || true)
  command_for stat_non "$in"
  stat=$("${CMD[@]}" 2> /dev/null || true)
  GENE_COUNTS=("${cod:-0}" "${pre:-0}" "${codons:-0/0}" "${orfs:-0}" "$stat")
  rm -rf "$o"
}

# Cross-checks on E. coli, outside the timing: the --STAT_NON_VS_ALL line of docs/commands.md,
# and the ORFs of --orf with ATG starts against getorf's (table 0 starts only at ATG; its
# lengths count the start codon, which --MIN_ORF_SIZE does not).
check_genes_ecoli() {
  local in=$1 o=$scratch/out expected='0.124308  50.8 43.1064'
  gene_counts "$in"
  ecoli_counts=("${GENE_COUNTS[@]}")
  if [ "${GENE_COUNTS[4]}" = "$expected" ]; then
    echo "- \`--STAT_NON_VS_ALL\` prints \`$expected\`, as documented."
  else
    echo "- **\`--STAT_NON_VS_ALL\` prints \`${GENE_COUNTS[4]}\`, not \`$expected\`.**"
  fi
  command -v getorf > /dev/null || return 0
  mkdir -p "$o"
  "$bin" --orf "$o/atg.txt" --seq "$in" --ATG_ 1 --TAA_ 1 --TGA_ 1 --TAG_ 1 --MIN_ORF_SIZE 87 > /dev/null 2>&1 || true
  getorf -sequence "$in" -outseq "$o/getorf.fa" -find 1 -minsize 90 2> /dev/null || true
  # getorf shows [first - last] of the ORF without its stop codon, [last - first] on the reverse strand.
  awk '/^>/ { a = $2; b = $4; sub(/\[/, "", a); sub(/\]/, "", b)
      if ($5 == "(REVERSE") print b, a - 3, 2; else print a + 3, b, 1 }' "$o/getorf.fa" | sort > "$o/theirs"
  awk 'NF { print $1, $2, $4 }' "$o/atg.txt" | sort > "$o/ours"
  local ours theirs
  ours=$(wc -l < "$o/ours") theirs=$(wc -l < "$o/theirs")
  if [ "$ours" -gt 0 ] && cmp -s "$o/ours" "$o/theirs"; then
    echo "- \`--orf\` with \`--ATG_ 1\` only and \`--MIN_ORF_SIZE 87\` lists the same $ours ORFs as \`getorf -find 1 -minsize 90\`."
  else
    echo "- **\`--orf\` with ATG starts lists $ours ORFs, getorf $theirs; $(comm -3 "$o/ours" "$o/theirs" | wc -l) differ.**"
  fi
  rm -rf "$o"
}

# Cross-checks on the repeated genome: every copy gives the same coding lines, pre-start regions,
# codons (bar those across the joins) and shares.
check_genes_copies() {
  local in=$1 copies=$2
  [ "${#ecoli_counts[@]}" = 5 ] || return 0
  gene_counts "$in"
  local c=("${GENE_COUNTS[@]}") e=("${ecoli_counts[@]}") starts
  if [ "${c[0]}" = $((copies * e[0])) ] && [ "${c[1]}" = $((copies * e[1])) ]; then
    echo "- \`--parse\` wrote $copies x ${e[0]} coding lines, \`--pre_start\` $copies x ${e[1]} regions."
  else
    echo "- **\`--parse\` wrote ${c[0]} coding lines, \`--pre_start\` ${c[1]} regions: not $copies x ${e[0]} and $copies x ${e[1]}.**"
  fi
  starts=$((copies * ${e[2]%/*}))
  if [ "${c[2]%/*}" = "$starts" ] && [ "${c[4]}" = "${e[4]}" ]; then
    echo "- \`--orf\` counted $copies x the starts of E. coli ($starts) and $((${c[2]#*/} - copies * ${e[2]#*/})) more stops (across the joins), listed ${c[3]} ORFs ($copies x ${e[3]} = $((copies * e[3]))); \`--STAT_NON_VS_ALL\` prints the same line."
  else
    echo "- **\`--orf\` counted ${c[2]} starts/stops (E. coli ${e[2]}); \`--STAT_NON_VS_ALL\` prints \`${c[4]}\` (E. coli \`${e[4]}\`).**"
  fi
}


# Model commands on E. coli: --mkmod and --mkchain next to Prodigal's training and the k-mer
# counting floor, --mkchain next to Glimmer's build-icm, and the memory of the large orders.
run_model() {
  local runs=$model_runs in mb count
  gene_inputs 1
  in=$GENOME
  mb=$(calc "printf \"%.1f\", $(stat -c %s "$in") / 1e6")
  count=$(wc -l < "$genes")
  cod_file=$data/genes/ecoli_x1.cod.txt
  cod_fasta=$data/genes/ecoli_x1.cod.fa
  "$bin" --parse --seq "$in" --geneset "$genes" --cod "$cod_file" --non "$data/genes/ecoli_x1.non.txt" \
    --TAA_ 1 --TGA_ 1 --TAG_ 1 2> /dev/null || rm -f "$cod_file"
  # The same genes as FASTA records, one per gene, for build-icm.
  [ -s "$cod_file" ] && awk 'NR > 1 { print ">gene" NR - 1; print }' "$cod_file" > "$cod_fasta"
  say "model commands on $in: $mb MB, $count genes"
  gene_table_head "$mb" "$count" "Model commands on E. coli MG1655" "wall ratio"
  run_pair model "$in" mkmod prodigal_train "$mb"
  run_pair model "$in" mkmod kmer_floor "$mb"
  run_pair model "$in" mkchain5 prodigal_train "$mb"
  run_pair model "$in" mkchain5 kmer_floor "$mb"
  run_pair model "$in" mkchain5 build_icm "$mb"
  runs=${BENCH_RUNS:-3}
  run_alone model "$in" "$mb" "" "" mkchain10 mkchain11
  if [ "$order12_runs" -gt 0 ]; then
    runs=$order12_runs
    run_alone model "$in" "$mb" "" "" mkchain12
    local ok
    ok=$(calc "print (${peak_mb[model.mkchain12]:-1e9} <= 2000) ? \"yes\" : \"no\"")
    note_target '`--mkchain --order 12` within 2 GB of memory' "${peak_mb[model.mkchain12]:-not run} MB" "$ok"
  fi
  echo
  model_notes
}

# What the floor reads.
model_notes() {
  local floor_wall=${walls[model.kmer_floor]:-} cod_mb genes_in
  if [ -n "$floor_wall" ] && [ -s "$cod_file" ]; then
    cod_mb=$(calc "printf \"%.1f\", $(stat -c %s "$cod_file") / 1e6")
    genes_in=$(grep -vc '^>' "$cod_file")
    echo "- The floor reads the $cod_mb MB coding file of \`--parse\` ($genes_in genes, one per line) and counts the 6-letter words of the three codon positions in $floor_wall s ($(calc "printf \"%.0f\", $cod_mb / ($floor_wall > 0 ? $floor_wall : 0.001)") MB/s); it does not read the genome or the gene set, cut the genes, count the non-coding words, turn counts into probabilities or print the chains."
  fi
  echo "- \`--order 12\`: seven tables of 4^13 doubles would take $(calc "printf \"%.2f\", 7 * 4^13 * 8 / 1e9") GB; \`--mkchain\` makes a table when it estimates it, writes the coding file to its temporary copy before it estimates the non-coding chain (and puts it in place only once that chain has trained) and prints row by row, so it holds the three coding tables at most ($(calc "printf \"%.2f\", 3 * 4^13 * 8 / 1e9") GB)."
}
