#include "seq/LetterTables.h"

#include <array>
#include <span>
#include <string_view>

#include "common/Param.h"

namespace genetrain {

namespace {

constexpr bool IsLetter(int byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

constexpr LetterTable MakeLetterTable(bool keepCase) {
  LetterTable table{};
  for (int byte = 0; byte < 256; ++byte) {
    if (IsLetter(byte)) table[byte] = 'N';
  }
  for (char letter : {'A', 'C', 'G', 'T'}) {
    const char lower = static_cast<char>(letter - 'A' + 'a');
    table[static_cast<unsigned char>(letter)] = letter;
    table[static_cast<unsigned char>(lower)] = keepCase ? lower : letter;
  }
  table['U'] = 'T';
  table['u'] = keepCase ? 't' : 'T';
  return table;
}

constexpr CodeTable MakeCodeTable() {
  CodeTable table{};
  for (int byte = 0; byte < 256; ++byte)
    table[byte] = IsLetter(byte) ? std::uint8_t{kOther} : kDropped;
  for (const auto& [upper, code] : {std::pair{'A', kA}, std::pair{'C', kC}, std::pair{'G', kG},
                                    std::pair{'T', kT}, std::pair{'U', kT}}) {
    table[static_cast<unsigned char>(upper)] = code;
    table[static_cast<unsigned char>(upper - 'A' + 'a')] = code;
  }
  return table;
}

struct CodonFlag {
  std::string_view key;
  unsigned codon;
};

constexpr std::array<CodonFlag, 3> kStopFlags = {
    {{"--TAA_", kCodonTAA}, {"--TGA_", kCodonTGA}, {"--TAG_", kCodonTAG}}};
constexpr std::array<CodonFlag, 4> kStartFlags = {
    {{"--ATG_", kCodonATG}, {"--GTG_", kCodonGTG}, {"--TTG_", kCodonTTG}, {"--CTG_", kCodonCTG}}};

bool ReadCodonFlags(Param& param, std::span<const CodonFlag> flags, OnBadFlag onBad,
                    CodonSet& set) {
  CodonSet named;
  for (const CodonFlag& flag : flags) {
    bool wanted = false;
    if (!param.GetOpt(wanted, flag.key) && onBad == OnBadFlag::kFail) return false;
    if (wanted) named.Add(flag.codon);
  }
  set = named;
  return true;
}

constexpr LetterTable kUpper = MakeLetterTable(false);
constexpr LetterTable kCasePreserving = MakeLetterTable(true);
constexpr CodeTable kCodes = MakeCodeTable();

}  // namespace

const LetterTable& UpperLetterTable() {
  return kUpper;
}
const LetterTable& CasePreservingLetterTable() {
  return kCasePreserving;
}
const CodeTable& BaseCodeTable() {
  return kCodes;
}

bool ReadStopCodons(Param& param, OnBadFlag onBad, CodonSet& stops) {
  return ReadCodonFlags(param, kStopFlags, onBad, stops);
}

bool ReadStartCodons(Param& param, OnBadFlag onBad, CodonSet& starts) {
  return ReadCodonFlags(param, kStartFlags, onBad, starts);
}

}  // namespace genetrain
