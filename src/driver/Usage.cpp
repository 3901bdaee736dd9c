#include "driver/Usage.h"

#include <cstdio>
#include <string_view>

namespace genetrain {

namespace {

// Byte for byte what users and driver scripts see: the tags are informative only, and the two
// ORF lines spelling out the triplets are part of the text.
constexpr std::string_view kUsage = R"(Version: 2.11c
Usage:
--par <s>
--clean_join <s>
  --seq <s>
  --log <s>
  --MIN_CONTIG_SIZE <i>
  --MAX_N_SUBSTRING <i>
  --MIN_SEQ_SIZE <i>
  --GAP_FILLER <s>
--gc <s>
  --seq <s>
  --GC_PRECISION <i>
  --GC_LABEL <s>
--stat <s>
  --seq <s>
  --GC_PRECISION <i>
--clean
  --seq <s>
  --out_clean <s>
  --out_masked <s>
  --MIN_CONTIG_SIZE <i>
  --MIN_SEQ_SIZE <i>
  --GAP_FILLER <s>
  --REPLACE_N_STRING <b>
  --LEFT_GAP_FILLER <s>
  --RIGHT_GAP_FILLER <s>
--split <s>
  --seq <s>
  --SPLIT_SIZE <i>
  --MIN_SPLIT_SIZE <i>
--mkmod <s>
  --seq <s>
  --geneset <s>
  --ORDM <i>
  --PHMM <s>
  --NAME <s>
  --ATG_ <f>
  --GTG_ <f>
  --TTG_ <f>
  --CTG_ <f>
  --TAA_ <b>
  --TGA_ <b>
  --TAG_ <b>
  --MINC <i>
  --MAXC <i>
  --MAXN <i>
  --NDEC <i>
  --CDEC <i>
  --CDCD <i>
  --CD1P <i>
  --CD2P <i>
  --COD1 <3fc>
  --COD2 <3fc>
  --NONC <fc>
  --MIN_COD <i>
  --MIN_NON <i>
  --EXCLUDE_PARTIAL <i>
  --START_PRECISION <i>
  --START_PSEUDOCOUNTS <i>
  --SEPARATE_COD <b>
  --RANDOM_NONCOD <f>
  --MKCHAIN_L_MARGING <i>
  --MKCHAIN_R_MARGING <i>
  --MKCHAIN_PSEUDOCOUNTS <i>
  --MKCHAIN_PRECISION <i>
--parse
  --seq <s>
  --geneset <s>
  --cod <s>
  --non <s>
  --MIN_COD <i>
  --MIN_NON <i>
  --EXCLUDE_PARTIAL <i>
  --COD_L_MARGIN <i>
  --COD_R_MARGIN <i>
--mkchain
  --chain_cod <s>
  --chain_non <s>
  --ORDM <i>
  --seq <s>
  --geneset <s>
  --MIN_COD <i>
  --MIN_NON <i>
  --EXCLUDE_PARTIAL <i>
  --SEPARATE_COD <b>
  --MKCHAIN_L_MARGING <i>
  --MKCHAIN_R_MARGING <i>
  --MKCHAIN_PSEUDOCOUNTS <i>
  --MKCHAIN_PRECISION <i>
--mkmod <s>
  --cod <s>
  --non <s>
  --ORDM <i>
  --MKCHAIN_PSEUDOCOUNTS <i>
  --MKCHAIN_PRECISION <i>
--compare
  --source <s>
  --target <s>
  --COMPARE_START <b>
  --COMPARE_END <b>
  --COMPARE_PRECISION <i>
--pre_start <s>
  --PRE_START_WIDTH <i>
  --PRE_START_RELATIVE_POS <i>
  --PRE_START_INTERGENIC <b>
  --PRE_START_LINES <i>
  --seq <s>
  --geneset <s>
--gibbs <s>
  --seq <s>
  --mod <s>
  --log <s>
  --GIBBS_PRECISION_MAT <i>
  --GIBBS_PRECISION_DUR <i>
  --GIBBS_PSEUDOCOUNTS_MAT <i>
  --GIBBS_PSEUDOCOUNTS_DUR <i>
--mask <s>
  --seq <s>
  --out <s>
--combine <s>
  --first <s>
  --second <s>
--STAT_NON_VS_ALL
  --seq <s>
  --geneset <s>
--ORF_PER_SEQ <s>
  --seq <s>
  --geneset <s>
  --MIN_ORF_SIZE <d> number of nt between start and stop
   provide start/stop triplets
  --ORF_OUT <0/1>
--orf
  --seq <s>
  --MIN_ORF_SIZE <d>
  --ORF_MARGIN_LEFT <d>
  --ORF_MARGIN_RIGHT <d>
   provide start/stop triplets
  --ORF_OUT <0/1>
--intergenic
  --seq <s>
  --geneset <s>
  --non <s>
  --MIN_NON <i>
  --COD_L_MARGIN <i>
  --COD_R_MARGIN <i>
  --shift_zero <i>
--count_substring_n
--count_substring_atcg
  --max_nnn_substring <i>
)";

}  // namespace

void PrintUsage() {
  std::fwrite(kUsage.data(), 1, kUsage.size(), stdout);
}

std::string_view Version() {
  constexpr std::string_view kPrefix = "Version: ";
  const std::string_view first = kUsage.substr(0, kUsage.find('\n'));
  return first.substr(kPrefix.size());
}

}  // namespace genetrain
