#ifndef GENETRAIN_SEQ_SSEQ_H
#define GENETRAIN_SEQ_SSEQ_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/Param.h"
#include "common/Report.h"

namespace genetrain {

// FASTA records in the single-case view (A, C, G, T, N only), and the commands that measure,
// clean, join, mask and split them. Also the result table of those commands.
class SSeq : public Report {
 public:
  // Letter counts in the order A, C, G, T, N.
  struct Tally {
    std::uint64_t a = 0, c = 0, g = 0, t = 0, n = 0;
    std::uint64_t Unambiguous() const { return a + c + g + t; }
    std::uint64_t All() const { return a + c + g + t + n; }
    void Add(const Tally& other) {
      a += other.a;
      c += other.c;
      g += other.g;
      t += other.t;
      n += other.n;
    }
  };
  // A [begin, end) range of character positions of a joined text.
  struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;
  };

  // Appends the text cut into lines of at most `width` letters, each with its end of line; width
  // 0 puts the whole text on one line; an empty text appends nothing.
  static void WriteLines(std::string_view text, std::uint32_t width, std::string& out);
  // The letters of a raw region (line ends and all) as the reader keeps them: a, c, g, t in
  // either case, U and u as t, every other letter as N; non-letters are not counted.
  static Tally TallyLetters(std::string_view raw);
  static double GcPercent(const Tally& tally) { return GcShare(tally, 100); }
  // (G + C) * scale / (A + C + G + T) in double precision, 0 without any of the four: the one
  // GC computation. Scale 100 gives the percentage the reports print, 1 the fraction a random
  // non-coding chain takes.
  static double GcShare(const Tally& tally, double scale);
  // Adds the base codes (A 0, C 1, G 2, T 3, anything else N) to the tally.
  static void AddCodes(const std::vector<std::uint8_t>& codes, Tally& tally);

  // Statistics (--stat, --gc).
  bool Stat(Param& param);
  bool Gc(Param& param);
  // What they count of a FASTA file: the letters of all records, the records, and the label of
  // the first record while it is the only one. The file is read in blocks of the given size;
  // false after a loading message.
  struct FileCounts {
    Tally letters;
    std::uint64_t records = 0;
    std::string firstLabel;
  };
  static bool CountFile(const std::string& name, std::size_t blockSize, FileCounts& counts);

  // Cleaning, joining and masking (--clean_join, --clean, --mask). The input is read in blocks of
  // kFastaBlockSize, or of the size given.
  bool CleanJoin(Param& param);
  bool CleanJoin(Param& param, std::size_t blockSize);
  bool Clean(Param& param);
  bool Clean(Param& param, std::size_t blockSize);
  bool Mask(Param& param);
  bool Mask(Param& param, std::size_t blockSize);

  // Splitting (--split), reading as above.
  bool Split(Param& param);
  bool Split(Param& param, std::size_t blockSize);
  // The bounds of the pieces of a sequence cut at runs of N. Leading and trailing runs shrink to
  // the margin; inner runs longer than `maxRun` are cut, each neighbouring piece keeping `margin`
  // letters of the run (or what there is of the sequence).
  static std::vector<Range> PiecesAtN(std::string_view letters, std::int32_t maxRun,
                                      std::int32_t margin);
  static std::string MakeName(std::string_view first, std::string_view second, std::int64_t number);
};

}  // namespace genetrain

#endif
