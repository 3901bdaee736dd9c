// Markov chain estimation: word counts per frame, pseudocounts, the extension of a low count
// order to the full order, the independent-letters model and the printed tables.

#include "model/MkChain.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>

#include "common/Format.h"
#include "common/Message.h"
#include "seq/LetterTables.h"

namespace genetrain {

namespace {

// Words of up to 15 letters: 4^15 entries per table.
constexpr int kMaxOrder = 14;
constexpr std::uint32_t kMaxPrintPrecision = 10;

// Maps a base code to the letter value of the word index, 0..3, or 4 for an unknown letter.
using LetterMap = std::array<std::uint8_t, 256>;

constexpr LetterMap MakeLetterMap(bool complement) {
  LetterMap map{};
  for (std::size_t code = 0; code < map.size(); ++code) {
    if (!IsBase(static_cast<std::uint8_t>(code))) {
      map[code] = 4;
    } else {
      map[code] = static_cast<std::uint8_t>(complement ? 3 - code : code);
    }
  }
  return map;
}

constexpr LetterMap kForwardLetters = MakeLetterMap(false);
constexpr LetterMap kComplementLetters = MakeLetterMap(true);

std::size_t WordCount(int letters) {
  return std::size_t{1} << (2 * letters);
}

std::string Number(std::int64_t value) {
  std::string text;
  AppendInteger(text, value);
  return text;
}

bool Fail(std::initializer_list<std::string_view> parts) {
  PrintError(parts);
  return false;
}

bool FailCount(double sum) {
  std::string text = "error: count ";
  AppendGeneral(text, sum);
  return Fail({text});
}

// One pass over a stretch with a rolling word index and a rolling mask of unknown letters: the
// first countOrder letters only load the word; every later letter ends a word, counted in the
// current frame table when the mask is clear, and advances the frame.
template <typename Iterator>
void CountWords(Iterator first, Iterator last, const LetterMap& letters, int countOrder,
                double* const* frames, int period) {
  if (last - first < countOrder) return;
  const std::uint32_t keep = (std::uint32_t{1} << (2 * countOrder)) - 1;
  std::uint32_t index = 0;
  std::uint32_t unknown = 0;
  for (int i = 0; i < countOrder; ++i, ++first) {
    const std::uint32_t letter = letters[*first];
    index = (index << 2) | (letter & 3);
    unknown = (unknown << 2) | ((letter >> 2) * 3);
  }
  int frame = 0;
  for (; first != last; ++first) {
    const std::uint32_t letter = letters[*first];
    index = ((index & keep) << 2) | (letter & 3);
    unknown = ((unknown & keep) << 2) | ((letter >> 2) * 3);
    if (unknown == 0) frames[frame][index] += 1.0;
    if (++frame == period) frame = 0;
  }
}

// Normalises the first `words` entries with the pseudocount: (entry + p) / (S + words * p).
// False for a table without any count.
bool NormaliseEntries(std::vector<double>& table, std::size_t words, int pseudocount) {
  double sum = 0;
  for (std::size_t i = 0; i < words; ++i) sum += table[i];
  if (sum == 0) return FailCount(sum);
  const double total = sum + static_cast<double>(static_cast<std::int64_t>(words) * pseudocount);
  for (std::size_t i = 0; i < words; ++i) table[i] = (table[i] + pseudocount) / total;
  return true;
}

// Words of level + 1 letters become words of level + 2 letters: the appended letter is weighted
// by its frequency after the first `level` letters of the word (the four words of a group).
void ExtendLevel(std::vector<double>& table, std::vector<double>& copy, int level) {
  copy.assign(table.begin(), table.begin() + static_cast<std::ptrdiff_t>(WordCount(level + 1)));
  const std::size_t groups = WordCount(level);
  for (std::size_t g = 0; g < groups; ++g) {
    const double* e = copy.data() + 4 * g;
    const double sum = e[0] + e[1] + e[2] + e[3];
    std::array<double, 4> follow{};
    if (sum != 0) {
      for (int n = 0; n < 4; ++n) follow[n] = e[n] / sum;
    }
    double* out = table.data() + 16 * g;
    for (int m = 0; m < 4; ++m) {
      for (int n = 0; n < 4; ++n) out[4 * m + n] = e[m] * follow[n];
    }
  }
}

// A table value in fixed notation with the point always shown; a value that is not zero but
// would print as zero (negatives and NaN included) prints as the smallest printable step.
char* WriteValue(char* out, char* end, double value, int digits, double step) {
  if (value != 0 && !(value >= step)) value = step;
  const std::to_chars_result result =
      std::to_chars(out, end, value, std::chars_format::fixed, digits);
  out = result.ptr;
  if (digits == 0 && std::isfinite(value)) *out++ = '.';
  return out;
}

constexpr std::array<double, kMaxPrintPrecision + 1> kSteps = {1e-0, 1e-1, 1e-2, 1e-3, 1e-4, 1e-5,
                                                               1e-6, 1e-7, 1e-8, 1e-9, 1e-10};

}  // namespace

ChainSettings ReadChainSettings(Param& param, int order, int period) {
  ChainSettings settings;
  std::int32_t readOrder = -1;
  param.GetOpt(readOrder, "--order_non");
  if (period == 1) settings.countOrder = readOrder;
  // The tuning options of an invalid chain are never read, so their messages do not appear.
  const int countOrder = settings.countOrder == -1 ? order : settings.countOrder;
  if (!MkChain::SettingFault(order, period, countOrder).empty()) return settings;
  // Each value is read as a non-negative integer; one beyond the int range is held at its end.
  const auto read = [&param](int& target, std::string_view key) {
    std::uint32_t value = static_cast<std::uint32_t>(target);
    if (param.GetOpt(value, key)) {
      target = static_cast<int>(std::min<std::uint32_t>(value, std::numeric_limits<int>::max()));
    }
  };
  read(settings.leftMargin, "--MKCHAIN_L_MARGING");
  read(settings.rightMargin, "--MKCHAIN_R_MARGING");
  read(settings.pseudocount, "--MKCHAIN_PSEUDOCOUNTS");
  read(settings.precision, "--MKCHAIN_PRECISION");
  param.GetOpt(settings.revcomp, "--revcomp_non");
  return settings;
}

MkChain::MkChain(int chainOrder, int chainPeriod, const ChainSettings& settings)
    : MkChain(chainOrder, chainPeriod, settings, Deferred{}) {
  if (valid_) Size();
}

MkChain::MkChain(int chainOrder, int chainPeriod, const ChainSettings& settings, Deferred)
    : left_margin(settings.leftMargin),
      right_margin(settings.rightMargin),
      revcomp(settings.revcomp),
      order(chainOrder),
      period(chainPeriod),
      countOrder(settings.countOrder == -1 ? chainOrder : settings.countOrder),
      pseudocount(settings.pseudocount),
      precision(settings.precision) {
  const std::string fault = SettingFault(order, period, countOrder);
  valid_ = fault.empty();
  if (!valid_) PrintError({fault});
}

MkChain::MkChain(int chainOrder, int chainPeriod, Param& param)
    : MkChain(chainOrder, chainPeriod, ReadChainSettings(param, chainOrder, chainPeriod)) {}

std::string MkChain::SettingFault(int order, int period, int countOrder) {
  if (static_cast<unsigned>(order) > kMaxOrder) return "error: order " + Number(order);
  if (countOrder < 0 || countOrder > kMaxOrder) return "error: order " + Number(countOrder);
  if (countOrder > order) {
    return "error: order_count " + Number(countOrder) + " is higher than order " + Number(order);
  }
  if (period != 1 && period != 3) return "error: period " + Number(period);
  return {};
}

void MkChain::Size() {
  tables.resize(static_cast<std::size_t>(period));
  for (std::vector<double>& table : tables) table.resize(WordCount(order + 1), 0.0);
}

void MkChain::Release() {
  std::vector<std::vector<double>>().swap(tables);
}

void MkChain::CountForward(const std::uint8_t* begin, const std::uint8_t* end) {
  std::array<double*, 3> frames{};
  for (std::size_t f = 0; f < tables.size(); ++f) frames[f] = tables[f].data();
  CountWords(begin, end, kForwardLetters, countOrder, frames.data(), period);
}

// The reverse strand, read 5' to 3': from the stretch's last letter back to its first,
// complemented. Only for period 1, so everything goes to table 0.
void MkChain::CountReverse(const std::uint8_t* begin, const std::uint8_t* end) {
  double* const frames[1] = {tables[0].data()};
  CountWords(std::make_reverse_iterator(end), std::make_reverse_iterator(begin), kComplementLetters,
             countOrder, frames, 1);
}

void MkChain::Symmetrise(int letters) {
  std::vector<double>& table = tables[0];
  const std::size_t words = WordCount(letters);
  for (std::size_t i = 0; i < words; ++i) {
    const std::size_t j = ReverseComplementWord(static_cast<std::uint32_t>(i), letters);
    const double mean = (table[i] + table[j]) * 0.5;
    table[i] = mean;
    table[j] = mean;
  }
}

bool MkChain::Estimate(const CodeSeq& sequence) {
  if (sequence.empty()) return Fail({"error: data input empty "});
  if (tables.empty()) Size();
  const std::uint8_t* begin = sequence.data();
  const std::uint8_t* end = begin + sequence.size();
  CountForward(begin, end);
  if (revcomp && period == 1) CountReverse(begin, end);
  return Normalise(pseudocount);
}

bool MkChain::Estimate(const std::vector<CodeSeq>& sequences) {
  return Estimate(sequences, left_margin, right_margin, pseudocount);
}

bool MkChain::Estimate(const std::vector<CodeSeq>& sequences, int left, int right,
                       int pseudocountValue) {
  if (sequences.empty()) return Fail({"error: data input empty "});
  if (left < 0 || right < 0) {
    return Fail({"error: Lmarg ", Number(left), " Rmarg ", Number(right)});
  }
  if (tables.empty()) Size();
  const bool bothStrands = revcomp && period == 1;
  for (const CodeSeq& sequence : sequences) {
    const std::int64_t length = static_cast<std::int64_t>(sequence.size());
    if (std::int64_t{left} + right >= length) continue;
    const std::uint8_t* data = sequence.data();
    CountForward(data + left, data + length - right);
    // The margins swap ends on the reverse strand.
    if (bothStrands) CountReverse(data + right, data + length - left);
  }
  if (bothStrands) Symmetrise(countOrder + 1);
  return Normalise(pseudocountValue);
}

bool MkChain::Normalise(int pseudocountValue) {
  if (countOrder == order) return NormaliseTables(pseudocountValue);
  return ExtendTable(pseudocountValue);
}

bool MkChain::NormaliseTables(int pseudocountValue) {
  if (pseudocountValue < 0) return Fail({"error: pseudocount ", Number(pseudocountValue)});
  for (std::vector<double>& table : tables) {
    if (!NormaliseEntries(table, table.size(), pseudocountValue)) return false;
  }
  return true;
}

// Normalises the words counted at the count order, then builds each longer word from the
// shorter ones, symmetrising every new level whatever the reverse-complement flag says.
bool MkChain::ExtendTable(int pseudocountValue) {
  if (tables.size() > 1) {
    return Fail({"error: order_count is supported only for period == 1 ", Number(countOrder)});
  }
  const std::size_t counted = WordCount(countOrder + 1);
  for (std::vector<double>& table : tables) {
    if (pseudocountValue < 0) return Fail({"error: pseudocount ", Number(pseudocountValue)});
    if (table.size() <= counted) {
      return Fail({"error in vector size ", Number(static_cast<std::int64_t>(counted))});
    }
    if (!NormaliseEntries(table, counted, pseudocountValue)) return false;
  }
  std::vector<double> copy;
  copy.reserve(WordCount(order));
  for (int level = countOrder; level < order; ++level) {
    ExtendLevel(tables[0], copy, level);
    Symmetrise(level + 2);
  }
  return true;
}

void MkChain::SetRandom(double gc) {
  if (tables.empty()) Size();
  const std::array<double, 4> letter = {(1 - gc) * 0.5, gc * 0.5, gc * 0.5, (1 - gc) * 0.5};
  for (std::vector<double>& table : tables) {
    // Level by level, in place: the word w of k letters is the word w / 4 of k - 1 letters
    // times its last letter; going down from the top reads each shorter word before it changes.
    table[0] = 1.0;
    for (int letters = 1; letters <= order + 1; ++letters) {
      for (std::size_t w = WordCount(letters); w-- > 0;) table[w] = table[w >> 2] * letter[w & 3];
    }
  }
}

std::optional<std::string> MkChain::ToText() const {
  return ToText(precision);
}

bool MkChain::Printable(int digits) {
  return static_cast<unsigned>(digits) <= kMaxPrintPrecision;
}

bool MkChain::CheckPrecision(int digits) {
  return Printable(digits) || Fail({"error: precision ", Number(digits)});
}

std::optional<std::string> MkChain::ToText(int digits) const {
  if (!CheckPrecision(digits)) return std::nullopt;
  std::string text = "\n";
  if (tables.size() != 1 && tables.size() != 3) return text;
  const std::size_t words = tables[0].size();
  // Frequencies below 10 print as "0." and the digits; one separator each.
  text.reserve(1 + words * tables.size() * (static_cast<std::size_t>(digits) + 3));
  for (std::size_t word = 0; word < words; ++word) AppendRow(text, word, digits);
  return text;
}

bool MkChain::WriteText(OutputFile& file) const {
  if (!CheckPrecision(precision)) return false;
  constexpr std::size_t kSlice = std::size_t{1} << 20;
  std::string text = "\n";
  text.reserve(kSlice + 4096);
  const std::size_t words =
      tables.size() == 1 || tables.size() == 3 ? tables[0].size() : std::size_t{0};
  for (std::size_t word = 0; word < words && !file.Failed(); ++word) {
    AppendRow(text, word, precision);
    if (text.size() >= kSlice) {
      file.Write(text);
      text.clear();
    }
  }
  file.Write(text);
  return true;
}

void MkChain::AppendRow(std::string& text, std::size_t word, int digits) const {
  // Room for three values of any magnitude (up to 309 integer digits each).
  char row[1024];
  char* const end = row + sizeof row;
  char* out = row;
  const double step = kSteps[static_cast<std::size_t>(digits)];
  for (std::size_t f = 0; f < tables.size(); ++f) {
    if (f > 0) *out++ = ' ';
    out = WriteValue(out, end, tables[f][word], digits, step);
  }
  *out++ = '\n';
  text.append(row, static_cast<std::size_t>(out - row));
}

}  // namespace genetrain
