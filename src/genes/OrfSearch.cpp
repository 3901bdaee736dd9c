// Codon sets, the codon array and the two ORF scans.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "genes/Genome.h"
#include "genes/Orf.h"
#include "seq/LetterTables.h"

namespace genetrain {

namespace {

std::uint64_t SumOver(const CodonSet& set, const std::array<std::uint64_t, 65>& usage) {
  std::uint64_t sum = 0;
  for (unsigned codon = 0; codon < usage.size(); ++codon) sum += set[codon] ? usage[codon] : 0;
  return sum;
}

}  // namespace

void ORF::SetCodons(const CodonSet& starts, const CodonSet& stops) {
  starts_direct = starts;
  stops_direct = stops;
  starts_reverse = starts.ReverseComplemented();
  stops_reverse = stops.ReverseComplemented();
}

namespace {

// out[i] = the codon of bases[i], bases[i + 1], bases[i + 2], for `count` codons: a simple loop
// that runs on whole vectors of bases.
void Codons(const std::uint8_t* bases, std::size_t count, std::uint8_t* out) {
  for (std::size_t i = 0; i < count; ++i) {
    const unsigned b1 = bases[i], b2 = bases[i + 1], b3 = bases[i + 2];
    // Every code that is not a base has a bit above the lowest two set, so one test of the three
    // codes together tells whether all are bases.
    const bool bases = IsBase(static_cast<std::uint8_t>(b1 | b2 | b3));
    out[i] = static_cast<std::uint8_t>(bases ? CodonIndex(b1, b2, b3) : ORF::kNoCodon);
  }
}

}  // namespace

// Codons and their tally in two loops rather than one: the codons are made on whole vectors,
// and the four interleaved tallies of CountCodons do not wait on each other.
void ORF::BuildCodonArray(const CodeSeq& codes) {
  const std::size_t n = codes.size();
  codon_array.assign(n, kNoCodon);
  if (n > 2) Codons(codes.data(), n - 2, codon_array.data() + 2);
  CountCodons();
}

// Block by block from the end: a block's bases, and the two before it, are set aside before its
// codons overwrite them; the blocks below are still untouched.
void ORF::BuildCodonArray(CodeSeq&& codes) {
  codon_array.swap(codes);
  CodeSeq().swap(codes);
  constexpr std::size_t kBlock = 256;
  std::array<std::uint8_t, kBlock + 2> bases;
  std::uint8_t* codon = codon_array.data();
  for (std::size_t end = codon_array.size(); end > 2;) {
    const std::size_t start = end > kBlock + 2 ? end - kBlock : 2;
    std::memcpy(bases.data(), codon + start - 2, end - start + 2);
    Codons(bases.data(), end - start, codon + start);
    end = start;
  }
  std::fill_n(codon, std::min<std::size_t>(codon_array.size(), 2), kNoCodon);
  CountCodons();
}

void ORF::CountCodons() {
  const std::size_t n = codon_array.size();
  const std::uint8_t* codon = codon_array.data();
  std::array<std::array<std::uint64_t, 65>, 4> tally{};
  std::size_t i = 2;
  for (; i + 4 <= n; i += 4) {
    ++tally[0][codon[i]];
    ++tally[1][codon[i + 1]];
    ++tally[2][codon[i + 2]];
    ++tally[3][codon[i + 3]];
  }
  for (; i < n; ++i) ++tally[0][codon[i]];
  for (std::size_t c = 0; c < codon_usage.size(); ++c)
    codon_usage[c] = tally[0][c] + tally[1][c] + tally[2][c] + tally[3][c];
}

std::uint64_t ORF::StartCount() const {
  return SumOver(starts_direct, codon_usage) + SumOver(starts_reverse, codon_usage);
}

std::uint64_t ORF::StopCount() const {
  return SumOver(stops_direct, codon_usage) + SumOver(stops_reverse, codon_usage);
}

// An ORF ends at every stop and at the last position of each frame (the last three positions).
// Walking back from an end, the start furthest upstream before the previous in-frame stop wins,
// and only when enough bases lie between: that is the first start after the previous stop, and
// if it is too close to the end no later start can qualify. So one pass keeps, per frame, that
// first start and whether a stop has been seen (the walk back would have hit it). The reverse
// scan is the mirror image, walking down from the end with ends at the stops and at 2, 1, 0.
namespace {

// What each codon is to one scan direction (bit 0 start, bit 1 stop), and the list of the
// codons that are either.
struct CodonKinds {
  std::array<std::uint8_t, 65> kind{};
  std::vector<std::uint8_t> listed;
};

CodonKinds KindsOf(const CodonSet& starts, const CodonSet& stops) {
  CodonKinds kinds;
  for (unsigned codon = 0; codon < kinds.kind.size(); ++codon) {
    kinds.kind[codon] = static_cast<std::uint8_t>((starts[codon] ? 1 : 0) | (stops[codon] ? 2 : 0));
    if (kinds.kind[codon] != 0) kinds.listed.push_back(static_cast<std::uint8_t>(codon));
  }
  return kinds;
}

// The scan state of one frame: the start nearest the last stop passed (-1: none since it), and
// whether any stop was passed at all.
struct FrameScan {
  std::int64_t start = -1;
  bool stopSeen = false;
};

// One scan over the codon array; `kDirect` walks up from 0, otherwise down from the end.
// Starts and stops are too frequent and too random to branch on position by position: each
// block of 64 positions is first reduced to a bit mask of the positions that hold either (bit i
// for the i-th position of the block in scan order), and only those are visited, without
// branching on what they hold.
template <bool kDirect>
class Scan {
 public:
  static constexpr int kBlock = 64;

  Scan(const std::vector<std::uint8_t>& codons, const CodonKinds& kinds, std::uint32_t min,
       std::vector<GENE>& orfs)
      : codons_(codons.data()),
        n_(static_cast<std::int64_t>(codons.size())),
        kinds_(kinds),
        min_(min),
        orfs_(orfs) {}

  void Run() {
    std::array<FrameScan, 3> frames;  // by position % 3
    if (kDirect) {
      // Up to the last three positions only a stop ends an ORF; those three end one each.
      const std::int64_t body = std::max<std::int64_t>(n_ - 3, 0);
      for (std::int64_t first = 0; first < body; first += kBlock)
        Block(first, static_cast<int>(std::min<std::int64_t>(kBlock, body - first)), frames);
      for (std::int64_t p = body; p < n_; ++p) Last(p, frames);
    } else {
      for (std::int64_t top = n_ - 1; top >= 3; top -= kBlock)
        Block(top, static_cast<int>(std::min<std::int64_t>(kBlock, top - 2)), frames);
      for (std::int64_t s = std::min<std::int64_t>(n_, 3) - 1; s >= 0; --s) Last(s, frames);
    }
  }

 private:
  static constexpr std::array<std::uint8_t, 72> kFrames = [] {
    std::array<std::uint8_t, 72> frames{};
    for (std::size_t i = 0; i < frames.size(); ++i) frames[i] = static_cast<std::uint8_t>(i % 3);
    return frames;
  }();

  // `count` (<= kBlock) positions from `first` on in scan order, where only a stop ends an ORF.
  void Block(std::int64_t first, int count, std::array<FrameScan, 3>& frames) {
    std::uint64_t events = EventMask(first, count);
    // Every visit notes an ORF ending there; only real ones get their bit in `found`.
    std::array<std::int64_t, kBlock> starts;
    std::array<bool, kBlock> stopsSeen;
    std::uint64_t found = 0;
    const std::uint8_t* kind = kinds_.kind.data();
    // The frame of the i-th position, as a table lookup: kFrames[phase + i] (upward) or
    // kFrames[phase + 66 - i] (downward) is (first +- i) % 3.
    const std::uint8_t* frameOf = kFrames.data() + static_cast<std::uint64_t>(first) % 3;
    while (events != 0) {
      const int i = std::countr_zero(events);
      events &= events - 1;
      const std::int64_t pos = kDirect ? first + i : first - i;
      FrameScan& frame = frames[frameOf[kDirect ? i : 66 - i]];
      const std::int64_t stop = kind[codons_[pos]] >> 1;
      const std::int64_t start = frame.start;
      starts[i] = start;
      stopsSeen[i] = frame.stopSeen;
      const bool ends = stop & (start >= 0) & (Distance(pos, start) >= min_);
      found |= std::uint64_t{ends} << i;
      frame.stopSeen |= stop != 0;
      // The first start after a stop is kept (start >> 63 is all ones while there is none, so
      // pos replaces it); a stop clears it to -1.
      frame.start = (start + ((pos - start) & (start >> 63))) | -stop;
    }
    for (; found != 0; found &= found - 1) {
      const int i = std::countr_zero(found);
      Emit(kDirect ? first + i : first - i, starts[i], stopsSeen[i], true);
    }
  }

  // One of the three last positions of the scan: an end whatever codon is there.
  void Last(std::int64_t pos, const std::array<FrameScan, 3>& frames) {
    const FrameScan& frame = frames[static_cast<std::uint64_t>(pos) % 3];
    if (frame.start >= 0 && Distance(pos, frame.start) >= min_)
      Emit(pos, frame.start, frame.stopSeen, (kinds_.kind[codons_[pos]] & 2) != 0);
  }

  std::uint64_t EventMask(std::int64_t first, int count) const {
    // Comparing whole blocks with each listed codon runs on vectors, a table lookup would not.
    // The flags are laid out in memory order, lowest position first, for both directions.
    std::array<std::uint8_t, kBlock> flags{};
    const std::uint8_t* codons = codons_ + (kDirect ? first : first - count + 1);
    for (const std::uint8_t listed : kinds_.listed) {
      if (count == kBlock) {
        for (int i = 0; i < kBlock; ++i) flags[i] |= codons[i] == listed;
      } else {
        for (int i = 0; i < count; ++i) flags[i] |= codons[i] == listed;
      }
    }
    // Eight flags at a time into eight bits: the product moves byte r to bit 56 + r, or to bit
    // 63 - r for the downward scan (no two partial products meet, so nothing carries).
    std::uint64_t mask = 0;
    for (int j = 0; j < kBlock; j += 8) {
      std::uint64_t bytes;
      std::memcpy(&bytes, flags.data() + j, sizeof bytes);
      if (kDirect) {
        mask |= (bytes * 0x0102040810204080u) >> 56 << j;
      } else {
        mask |= (bytes * 0x8040201008040201u) >> 56 << (56 - j);
      }
    }
    return kDirect ? mask : mask >> (kBlock - count);
  }

  // Bases strictly between the start codon and the end.
  static std::int64_t Distance(std::int64_t end, std::int64_t start) {
    return (kDirect ? end - start : start - end) - 3;
  }

  void Emit(std::int64_t end, std::int64_t start, bool stopSeen, bool closed) {
    GENE orf;
    orf.strand = kDirect ? Strand::kDirect : Strand::kReverse;
    orf.left = static_cast<std::int32_t>(kDirect ? start : end);
    orf.right = static_cast<std::int32_t>(kDirect ? end : start);
    orf.left_complete = kDirect ? stopSeen : closed;
    orf.right_complete = kDirect ? closed : stopSeen;
    orf.valid = true;
    orfs_.push_back(orf);
  }

  const std::uint8_t* codons_;
  const std::int64_t n_;
  const CodonKinds& kinds_;
  const std::int64_t min_;
  std::vector<GENE>& orfs_;
};

}  // namespace

void ORF::SearchDirect(std::uint32_t min) {
  const std::size_t n = codon_array.size();
  if (n == 0 || n < min) return;
  const CodonKinds kinds = KindsOf(starts_direct, stops_direct);
  Scan<true>(codon_array, kinds, min, orfs).Run();
}

void ORF::SearchReverse(std::uint32_t min) {
  const std::size_t n = codon_array.size();
  if (n == 0 || n < min) return;
  const CodonKinds kinds = KindsOf(starts_reverse, stops_reverse);
  Scan<false>(codon_array, kinds, min, orfs).Run();
}

}  // namespace genetrain
