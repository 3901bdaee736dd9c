// Reading the motif sites out of a Gibbs sampler's output, in either of its two layouts.

#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <string_view>

#include "common/FileBuf.h"
#include "common/Message.h"
#include "common/Output.h"
#include "motif/Gibbs.h"

namespace genetrain {

namespace {

constexpr std::size_t kMaxTokens = 10;
using Tokens = std::array<std::string_view, kMaxTokens>;

// The whole file, compressed content decoded; a file that cannot be opened or read (a folder,
// say) is reported, after the decoder's message if the data were bad.
bool LoadText(const std::string& name, std::string& text) {
  std::FILE* file = std::fopen(name.c_str(), "rb");
  bool ok = file != nullptr;
  if (ok) {
    ok = FileBuf::ReadRest(file, text, name.c_str());
    std::fclose(file);
  }
  if (!ok) PrintError({"error: opening file ", name});
  return ok;
}

// Hands out the lines of a text one by one, without their line feed; a last line without one
// counts, an end of text right after a line feed gives no further line.
class Lines {
 public:
  explicit Lines(std::string_view text) : rest_(text) {}
  bool Next(std::string_view& line) {
    if (rest_.empty()) return false;
    const std::size_t end = rest_.find('\n');
    line = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    return true;
  }

 private:
  std::string_view rest_;
};

bool IsBlankLine(std::string_view line) {
  return line.find_first_not_of(" \t") == std::string_view::npos;
}

// Splits at runs of separators, taking at most `limit` tokens; with `stopAtF` a token that is
// just "F" (the forward strand mark) ends the line without being counted.
std::size_t Split(std::string_view line, std::string_view separators, std::size_t limit,
                  bool stopAtF, Tokens& tokens) {
  std::size_t count = 0;
  std::size_t pos = line.find_first_not_of(separators);
  while (pos != std::string_view::npos && count < limit) {
    const std::size_t end = line.find_first_of(separators, pos);
    const std::string_view token = line.substr(pos, end - pos);
    if (stopAtF && token == "F") break;
    tokens[count++] = token;
    if (end == std::string_view::npos) break;
    pos = line.find_first_not_of(separators, end);
  }
  return count;
}

bool IsDigits(std::string_view token) {
  return token.find_first_not_of("0123456789") == std::string_view::npos;
}

bool IsLetters(std::string_view token) {
  return token.find_first_not_of("ATCGNUatcgnu") == std::string_view::npos;
}

// As C atoi reads a number (leading white space, a sign, digits up to the first other byte),
// but a value beyond the 32-bit range stops at its end instead of wrapping.
std::int32_t ToInt(std::string_view token) {
  std::size_t i = 0;
  while (i < token.size() && (token[i] == ' ' || (token[i] >= '\t' && token[i] <= '\r'))) ++i;
  bool negative = false;
  if (i < token.size() && (token[i] == '+' || token[i] == '-')) negative = token[i++] == '-';
  constexpr std::int64_t kLimit = std::int64_t{std::numeric_limits<std::int32_t>::max()} + 1;
  std::int64_t value = 0;
  for (; i < token.size() && token[i] >= '0' && token[i] <= '9'; ++i) {
    value = value * 10 + (token[i] - '0');
    if (value > kLimit) value = kLimit;
  }
  if (negative) return static_cast<std::int32_t>(-value);
  return static_cast<std::int32_t>(value == kLimit ? value - 1 : value);
}

void AppendWarning(std::string& warnings, std::string_view text, std::string_view line) {
  warnings.append(text).append(line).push_back('\n');
}

// The site of a line whose tokens are: region number, site number, start, left flank, site,
// right flank, end. A short line lacks one flank: the left one when the site starts the region.
bool SiteOf(const std::string_view* t, bool full, std::string_view& site) {
  if (!IsDigits(t[0]) || !IsDigits(t[1]) || !IsDigits(t[2])) return false;
  if (!IsLetters(t[3]) || !IsLetters(t[4])) return false;
  if (full) {
    if (!IsLetters(t[5]) || !IsDigits(t[6])) return false;
    site = t[4];
    return true;
  }
  if (!IsDigits(t[5])) return false;
  site = ToInt(t[2]) == 1 ? t[3] : t[4];
  return true;
}

enum class LineKind { kSkip, kEnd, kSite };

// The motif layout lists its sites under "MOTIF A" and ends at the "sites:" summary or the first
// line with parentheses.
LineKind MotifLineKind(std::string_view line, bool& /*started*/) {
  if (IsBlankLine(line) || line.find("MOTIF A") != std::string_view::npos) return LineKind::kSkip;
  if (line.find("sites:") != std::string_view::npos ||
      line.find_first_of("()") != std::string_view::npos) {
    return LineKind::kEnd;
  }
  return LineKind::kSite;
}

// The other layout starts after its "Num Motifs" line and ends at a line starting with '*'.
LineKind NumMotifsLineKind(std::string_view line, bool& started) {
  if (!started) {
    started = line.starts_with("Num Motifs");
    return LineKind::kSkip;
  }
  if (IsBlankLine(line)) return LineKind::kSkip;
  return line[line.find_first_not_of(" \t")] == '*' ? LineKind::kEnd : LineKind::kSite;
}

// How one layout's lines are told apart and cut into tokens; a site line holds `fullCount`
// tokens, or one fewer when a flank is missing.
struct LayoutRules {
  LineKind (*kind)(std::string_view line, bool& started);
  std::string_view separators;
  std::size_t limit;
  bool stopAtF;
  std::size_t fullCount;
};

constexpr LayoutRules kMotifRules{MotifLineKind, "- \t", 8, false, 7};
constexpr LayoutRules kNumMotifsRules{NumMotifsLineKind, ", \t", kMaxTokens, true, 8};

}  // namespace

void Gibbs::TakeSiteLine(std::string_view line, const std::string_view* tokens, bool full,
                         std::string& warnings) {
  std::string_view site;
  if (SiteOf(tokens, full, site)) {
    sites.emplace_back(site);
    positions.push_back(ToInt(tokens[2]));
  }
  if (ToInt(tokens[0]) != static_cast<std::int64_t>(sites.size()))
    AppendWarning(warnings, "warning: unexpected format in gibbs line ", line);
}

// Only the eleventh line is still looked at when the first ten hold no "Gibbs" line.
GibbsLayout Gibbs::DetectLayout(const std::string& name) {
  std::string text;
  if (!LoadText(name, text)) return GibbsLayout::kUnreadable;
  Lines lines(text);
  std::string_view line;
  for (int count = 1; count <= 11 && lines.Next(line); ++count) {
    if (line.starts_with("Gibbs")) return GibbsLayout::kNumMotifs;
  }
  return GibbsLayout::kMotif;
}

bool Gibbs::ParseLayout(const std::string& name, GibbsLayout layout) {
  if (layout == GibbsLayout::kUnreadable) return false;
  const LayoutRules& rules = layout == GibbsLayout::kNumMotifs ? kNumMotifsRules : kMotifRules;
  std::string text;
  if (!LoadText(name, text)) return false;
  std::string warnings;
  Lines lines(text);
  std::string_view line;
  Tokens tokens;
  bool started = false;
  while (lines.Next(line)) {
    const LineKind kind = rules.kind(line, started);
    if (kind == LineKind::kEnd) break;
    if (kind == LineKind::kSkip) continue;
    const std::size_t count = Split(line, rules.separators, rules.limit, rules.stopAtF, tokens);
    if (count == rules.fullCount || count + 1 == rules.fullCount) {
      TakeSiteLine(line, tokens.data(), count == rules.fullCount, warnings);
    } else {
      AppendWarning(warnings, "warning: unexpected line in gibbs paring: ", line);
    }
  }
  WriteStdout(warnings);
  return true;
}

// DetectLayout has reported an unreadable file.
bool Gibbs::Parse(const std::string& name) {
  return ParseLayout(name, DetectLayout(name));
}

}  // namespace genetrain
