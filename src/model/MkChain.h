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

// How a chain is counted and printed.
struct ChainSettings {
  int countOrder = -1;   // the order words are counted at, then extended; -1: the chain's order
  int leftMargin = 3;    // letters of each training sequence left out at its start
  int rightMargin = 3;   // and at its end
  int pseudocount = 1;   // added to every word's count
  int precision = 5;     // digits printed
  bool revcomp = false;  // count the reverse strand too (period 1 only)
};

// The settings a chain of the given order and period takes from the options: --order_non (for
// period 1 only), then, when that makes a valid chain, --MKCHAIN_L_MARGING, --MKCHAIN_R_MARGING,
// --MKCHAIN_PSEUDOCOUNTS, --MKCHAIN_PRECISION and --revcomp_non. A malformed value is reported
// and leaves its default; an invalid chain is left for its construction to report.
ChainSettings ReadChainSettings(Param& param, int order, int period);

// A Markov chain of a given order and period: one table per frame of the joint frequencies of
// the words of order + 1 letters (word index: first letter most significant base-4 digit).
// An invalid setting prints its message and makes the call that met it fail; the caller ends the
// command with status 1, so that the message is the last word of the run.
class MkChain {
 public:
  // An invalid order, count order or period prints its message and makes no table: Valid()
  // tells.
  MkChain(int order, int period, const ChainSettings& settings);
  // The same, but the tables are made by the first estimate: a chain that is never estimated
  // holds no memory (a table of order k holds 4^(k + 1) doubles per frame).
  struct Deferred {};
  MkChain(int order, int period, const ChainSettings& settings, Deferred);
  // ReadChainSettings, then the chain.
  MkChain(int order, int period, Param& param);

  // The message of an invalid setting; empty when the chain can be made.
  static std::string SettingFault(int order, int period, int countOrder);

  // False when the construction printed an invalid setting; nothing else may then be asked.
  bool Valid() const { return valid_; }

  // The estimates are false, their message printed, for no sequence, invalid margins or
  // pseudocount, or a frame without a word of countOrder + 1 known letters; the tables are then
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

  int left_margin = 3;
  int right_margin = 3;
  bool revcomp = false;
  int order = 0;
  int period = 1;
  std::vector<std::vector<double>> tables;
  int countOrder = 0;
  int pseudocount = 1;
  int precision = 5;

 private:
  void Size();
  // Adds the words of the stretch read forward (frames from 0) or as its reverse complement.
  void CountForward(const std::uint8_t* begin, const std::uint8_t* end);
  void CountReverse(const std::uint8_t* begin, const std::uint8_t* end);
  // Sets each word of table 0 and its reverse complement to their mean.
  void Symmetrise(int letters);
  bool Normalise(int pseudocountValue);
  bool NormaliseTables(int pseudocountValue);
  bool ExtendTable(int pseudocountValue);
  static bool CheckPrecision(int digits);
  static bool Printable(int digits);
  void AppendRow(std::string& text, std::size_t word, int digits) const;

  bool valid_ = true;
};

}  // namespace genetrain

#endif
