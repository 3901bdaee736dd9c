#ifndef GENETRAIN_MODEL_MKCHAIN_H
#define GENETRAIN_MODEL_MKCHAIN_H

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "common/Output.h"
#include "common/Param.h"
#include "seq/VSeq.h"

namespace genetrain {

// A Markov chain of a given order and period: one table per frame of the joint frequencies of
// the words of order + 1 letters (word index: first letter most significant base-4 digit).
// An invalid setting prints its message and makes the call that met it fail; the caller ends the
// command with status 1, so that the message is the last word of the run.
class MkChain {
 public:
  // Reads --order_non, then the tuning options --MKCHAIN_L_MARGING, --MKCHAIN_R_MARGING,
  // --MKCHAIN_PSEUDOCOUNTS, --MKCHAIN_PRECISION and --revcomp_non (malformed values are
  // reported and leave the defaults). An invalid order or period prints its message, reads no
  // tuning option and makes no table: Valid() tells.
  MkChain(int order, int period, Param& param);
  // The same, but the tables are made by the first estimate: a chain that is never estimated
  // holds no memory (a table of order k holds 4^(k + 1) doubles per frame).
  struct Deferred {};
  MkChain(int order, int period, Param& param, Deferred);
  // Takes the count order directly and reads no option.
  MkChain(int order, int period, int count_order);

  // False when the construction printed an invalid setting; nothing else may then be asked.
  bool Valid() const { return valid_; }

  // The estimates are false, their message printed, for no sequence, invalid margins or
  // pseudocount, or a frame without a word of count_order + 1 known letters; the tables are then
  // left half made.
  // One sequence taken whole, without margins.
  [[nodiscard]] bool Estimate(const CodeSeq& sequence);
  // A list of training sequences, with the chain's own margins and pseudocount.
  [[nodiscard]] bool Estimate(const std::vector<CodeSeq>& sequences);
  [[nodiscard]] bool Estimate(const std::vector<CodeSeq>& sequences, int left, int right,
                              int pseudocount);
  // The independent-letters model of GC fraction gc.
  void SetRandom(double gc);
  // Drops the tables and their memory.
  void Release();

  // For sequences taken whole: non-coding stretches, training files.
  void ClearMargins() {
    left_margin = 0;
    right_margin = 0;
  }

  // The printed table: a newline, then one line per word (three numbers for period 3). None,
  // with the message printed, when the precision cannot be printed.
  [[nodiscard]] std::optional<std::string> ToText() const;
  [[nodiscard]] std::optional<std::string> ToText(int precision) const;
  // The text of ToText() written to the output row by row, in slices of 1 MB, so that a chain of
  // any order is printed without its text being held; stops early when the output fails. False,
  // with the message printed and nothing written, when the precision cannot be printed.
  [[nodiscard]] bool WriteText(OutputFile& file) const;
  // False, with the message printed, when the precision cannot be printed: a caller checks it
  // before it touches its output.
  [[nodiscard]] bool CheckPrecision() const { return CheckPrecision(precision); }
  // The same test, silent.
  bool Printable() const { return Printable(precision); }

  // The index of the reverse complement of a word of `letters` letters; 0 for no letters.
  static std::uint32_t ReverseComplementIndex(std::uint32_t word, int letters);

  int left_margin = 3;
  int right_margin = 3;
  bool revcomp = false;
  int order = 0;
  int period = 1;
  std::vector<std::vector<double>> tables;
  int count_order = 0;
  int pseudocount = 1;
  int precision = 5;

 private:
  bool Validate() const;
  void Size();
  void ReadTuning(Param& param);
  // Adds the words of the stretch read forward (frames from 0) or as its reverse complement.
  void CountForward(const std::uint8_t* begin, const std::uint8_t* end);
  void CountReverse(const std::uint8_t* begin, const std::uint8_t* end);
  // Sets each word of table 0 and its reverse complement to their mean.
  void Symmetrise(int letters);
  bool Normalise(int pseudocount_value);
  bool NormaliseTables(int pseudocount_value);
  bool ExtendTable(int pseudocount_value);
  static bool CheckPrecision(int digits);
  static bool Printable(int digits);
  void AppendRow(std::string& text, std::size_t word, int digits) const;

  bool valid_ = true;
};

}  // namespace genetrain

#endif
