// Writes a metagenome-like FASTA file of about a given size, built from the bases of real
// genomes read on standard input (FASTA, any number of records):
//
//   gzip -dc genome.fasta.gz contigs.fasta.gz | metagen BYTES [SEED] > out.fa
//
// Contigs of 500 bases to 500 kb (mostly short, a few long), half of them reverse-complemented,
// with point mutations, short and long runs of N, soft-masked (lower-case) stretches, 60 or 70
// letters per line and headers ">contig_<i> len=<length>". The same input, size and seed give the
// same file byte for byte.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

// xoshiro256** seeded through splitmix64: fast, and identical on every platform.
class Random {
 public:
  explicit Random(std::uint64_t seed) {
    for (std::uint64_t& word : state_) {
      seed += 0x9e3779b97f4a7c15ULL;
      std::uint64_t z = seed;
      z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
      z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
      word = z ^ (z >> 31);
    }
  }
  std::uint64_t Next() {
    const std::uint64_t result = Rotate(state_[1] * 5, 7) * 9;
    const std::uint64_t t = state_[1] << 17;
    state_[2] ^= state_[0];
    state_[3] ^= state_[1];
    state_[1] ^= state_[2];
    state_[0] ^= state_[3];
    state_[2] ^= t;
    state_[3] = Rotate(state_[3], 45);
    return result;
  }
  // Uniform in [low, high].
  std::uint64_t Between(std::uint64_t low, std::uint64_t high) {
    return low + Next() % (high - low + 1);
  }
  // Uniform in [0, 1).
  double Unit() { return static_cast<double>(Next() >> 11) * 0x1.0p-53; }
  // Log-uniform in [low, high].
  std::uint64_t LogBetween(double low, double high) {
    return static_cast<std::uint64_t>(std::exp(std::log(low) + Unit() * std::log(high / low)));
  }

 private:
  static std::uint64_t Rotate(std::uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }
  std::array<std::uint64_t, 4> state_{};
};

// The upper-case A, C, G and T of every sequence line, joined.
std::string ReadPool() {
  std::string pool;
  std::string block(1 << 20, '\0');
  bool inHeader = false;
  std::size_t got = 0;
  while ((got = std::fread(block.data(), 1, block.size(), stdin)) > 0) {
    for (std::size_t i = 0; i < got; ++i) {
      const char c = block[i];
      if (c == '>') inHeader = true;
      if (c == '\n') inHeader = false;
      if (inHeader) continue;
      const char upper = static_cast<char>(c & ~0x20);
      if (upper == 'A' || upper == 'C' || upper == 'G' || upper == 'T') pool.push_back(upper);
    }
  }
  return pool;
}

char Complement(char c) {
  switch (c) {
    case 'A':
      return 'T';
    case 'C':
      return 'G';
    case 'G':
      return 'C';
    default:
      return 'A';
  }
}

// Most contigs short, some long: 80 % in 500 .. 20 kb, 20 % in 20 kb .. 500 kb.
std::uint64_t ContigLength(Random& random) {
  if (random.Between(0, 4) != 0) return random.LogBetween(500, 20000);
  return random.LogBetween(20000, 500000);
}

// Copies `length` bases from a random place of the pool (wrapping round), on either strand.
void TakeBases(std::string_view pool, std::uint64_t length, Random& random, std::string& seq) {
  seq.resize(length);
  std::uint64_t from = random.Between(0, pool.size() - 1);
  for (std::uint64_t i = 0; i < length; ++i) {
    seq[i] = pool[from];
    if (++from == pool.size()) from = 0;
  }
  if (random.Between(0, 1) == 0) return;
  std::reverse(seq.begin(), seq.end());
  for (char& c : seq) c = Complement(c);
}

// About one substitution in 200 bases, each to one of the three other bases.
void Mutate(std::string& seq, Random& random) {
  static constexpr std::string_view kBases = "ACGT";
  std::uint64_t at = random.Between(0, 399);
  while (at < seq.size()) {
    const std::size_t old = kBases.find(seq[at]);
    seq[at] = kBases[(old + random.Between(1, 3)) % 4];
    at += random.Between(1, 399);
  }
}

void Overwrite(std::string& seq, std::uint64_t length, Random& random, bool lower) {
  if (seq.size() < 4) return;
  length = std::min<std::uint64_t>(length, seq.size() / 4);
  const std::uint64_t at = random.Between(0, seq.size() - length);
  for (std::uint64_t i = at; i < at + length; ++i) {
    seq[i] = lower ? static_cast<char>(seq[i] | 0x20) : 'N';
  }
}

// Short N runs (1 .. 30), long ones (100 .. 5000) and soft-masked stretches (20 .. 3000).
void AddFeatures(std::string& seq, Random& random) {
  const std::uint64_t size = seq.size();
  const std::uint64_t shortRuns = random.Between(0, 2) + size / 40000;
  const std::uint64_t longRuns = (random.Between(0, 3) == 0 ? 1 : 0) + size / 150000;
  const std::uint64_t softRuns = random.Between(0, 1) + size / 25000;
  for (std::uint64_t i = 0; i < softRuns; ++i)
    Overwrite(seq, random.Between(20, 3000), random, true);
  for (std::uint64_t i = 0; i < shortRuns; ++i)
    Overwrite(seq, random.Between(1, 30), random, false);
  for (std::uint64_t i = 0; i < longRuns; ++i)
    Overwrite(seq, random.Between(100, 5000), random, false);
}

void AppendRecord(std::uint64_t index, std::string_view seq, std::uint64_t width,
                  std::string& out) {
  out += ">contig_";
  out += std::to_string(index);
  out += " len=";
  out += std::to_string(seq.size());
  out += '\n';
  for (std::size_t at = 0; at < seq.size(); at += width) {
    out += seq.substr(at, width);
    out += '\n';
  }
}

void Flush(std::string& out) {
  if (std::fwrite(out.data(), 1, out.size(), stdout) != out.size()) {
    std::fputs("metagen: write failed\n", stderr);
    std::exit(1);
  }
  out.clear();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fputs("usage: metagen BYTES [SEED] < genomes.fa > out.fa\n", stderr);
    return 1;
  }
  const std::uint64_t target = std::strtoull(argv[1], nullptr, 10);
  Random random(argc == 3 ? std::strtoull(argv[2], nullptr, 10) : 20240601);
  const std::string pool = ReadPool();
  if (pool.size() < 500000) {
    std::fputs("metagen: need at least 500000 bases on standard input\n", stderr);
    return 1;
  }
  std::string out;
  out.reserve((8 << 20) + 600000);
  std::string seq;
  std::uint64_t written = 0;
  for (std::uint64_t index = 1; written < target; ++index) {
    const std::uint64_t width = random.Between(0, 1) == 0 ? 60 : 70;
    std::uint64_t length = ContigLength(random);
    // The last contig takes what is left, so the file ends close to the target size.
    const std::uint64_t room = (target - written) * width / (width + 1);
    if (length > room) length = std::max<std::uint64_t>(room, 500);
    TakeBases(pool, length, random, seq);
    Mutate(seq, random);
    AddFeatures(seq, random);
    const std::size_t before = out.size();
    AppendRecord(index, seq, width, out);
    written += out.size() - before;
    if (out.size() >= (8 << 20)) Flush(out);
  }
  Flush(out);
  return 0;
}
