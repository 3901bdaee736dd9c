#ifndef GENETRAIN_TESTS_SEQ_STREAMEDSUPPORT_H
#define GENETRAIN_TESTS_SEQ_STREAMEDSUPPORT_H

// For the tests of the commands that read their FASTA input block by block and write as they go:
// a way to run them with a small block, plain computations of their results on the whole text,
// and random inputs.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <thread>

#include "TestSupport.h"
#include "seq/FastaBlocks.h"
#include "seq/MSSeq.h"
#include "seq/SSeq.h"

namespace genetrain::streamed {

template <typename Object>
test::Outcome RunBlocks(bool (Object::*handler)(Param&, std::size_t), std::size_t blockSize,
                        test::Pairs pairs) {
  Param param;
  for (const auto& [key, value] : pairs) param.Set(key, value);
  Object object;
  return test::Capture([&] { return (object.*handler)(param, blockSize); });
}

// The input of one run under the given name: a file, or a named pipe that a thread feeds, which
// the command can read only once, as it reads a pipe from the shell.
class Input {
 public:
  Input(const test::ScratchDir& dir, const std::string& name, std::string content, bool piped)
      : path_(dir.Path(name)) {
    if (!piped) {
      dir.Write(name, content);
      return;
    }
    std::signal(SIGPIPE, SIG_IGN);
    ::mkfifo(path_.c_str(), 0600);
    writer_ = std::thread([this, content = std::move(content)] { Feed(content); });
  }
  // A command that failed before it opened the pipe, or stopped reading, leaves the rest here.
  ~Input() {
    if (!writer_.joinable()) return;
    stop_ = true;
    const int fd = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK);
    if (fd >= 0) {
      ::fcntl(fd, F_SETFL, 0);
      char rest[4096];
      while (::read(fd, rest, sizeof rest) > 0) {
      }
      ::close(fd);
    }
    writer_.join();
  }
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  const std::string& Path() const { return path_; }

 private:
  // Opened without blocking, so that a reader that never comes cannot hold the thread.
  void Feed(std::string_view rest) {
    int fd = -1;
    while ((fd = ::open(path_.c_str(), O_WRONLY | O_NONBLOCK)) < 0 && !stop_) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (fd < 0) return;
    ::fcntl(fd, F_SETFL, 0);
    while (!rest.empty()) {
      const ssize_t done = ::write(fd, rest.data(), rest.size());
      if (done <= 0) break;
      rest.remove_prefix(static_cast<std::size_t>(done));
    }
    ::close(fd);
  }

  std::string path_;
  std::atomic<bool> stop_{false};
  std::thread writer_;
};

// ---- The plain computations, on the whole text ----

struct PlainRecord {
  std::string label, letters;
};

inline bool Space(char byte) {
  return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

inline char PlainLetter(char byte, bool keepCase) {
  if (!((byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z'))) return 0;
  const bool lower = byte >= 'a';
  char upper = static_cast<char>(lower ? byte - 32 : byte);
  if (upper == 'U') upper = 'T';
  if (std::string_view("ACGT").find(upper) == std::string_view::npos) return 'N';
  return keepCase && lower ? static_cast<char>(upper + 32) : upper;
}

// White space before a record is skipped; a ">" line is its label; the body runs to the next
// ">" wherever it stands.
inline std::vector<PlainRecord> PlainRecords(std::string_view text, bool keepCase) {
  std::vector<PlainRecord> records;
  std::size_t pos = 0;
  while (pos < text.size()) {
    while (pos < text.size() && Space(text[pos])) ++pos;
    PlainRecord record;
    std::size_t body = pos;
    if (pos < text.size() && text[pos] == '>') {
      body = std::min(text.find('\n', pos), text.size());
      record.label = std::string(text.substr(pos, body - pos));
    }
    const std::size_t end = std::min(text.find('>', body), text.size());
    for (std::size_t i = body; i < end; ++i) {
      if (const char letter = PlainLetter(text[i], keepCase)) record.letters.push_back(letter);
    }
    records.push_back(record);
    pos = end;
  }
  return records;
}

struct PlainTally {
  std::uint64_t a = 0, c = 0, g = 0, t = 0, n = 0;
  std::uint64_t Acgt() const { return a + c + g + t; }
  void Add(std::string_view letters) {
    for (const char letter : letters) {
      a += letter == 'A';
      c += letter == 'C';
      g += letter == 'G';
      t += letter == 'T';
      n += letter == 'N';
    }
  }
  void Add(const PlainTally& other) {
    a += other.a, c += other.c, g += other.g, t += other.t, n += other.n;
  }
};

struct PlainJoin {
  std::string text;
  std::vector<std::pair<std::size_t, std::size_t>> fillers;  // [begin, end)
  PlainTally all, kept;
  std::size_t records = 0, keptRecords = 0;
};

inline PlainJoin Join(const std::vector<PlainRecord>& records, const std::string& filler,
                      std::int64_t minimum) {
  PlainJoin join;
  for (const PlainRecord& record : records) {
    PlainTally own;
    own.Add(record.letters);
    join.all.Add(own);
    ++join.records;
    if (static_cast<std::int64_t>(own.Acgt()) < minimum) continue;
    if (!join.text.empty()) {
      join.fillers.push_back({join.text.size(), join.text.size() + filler.size()});
      join.text += filler;
    }
    join.text += record.letters;
    join.kept.Add(own);
    ++join.keptRecords;
  }
  return join;
}

// Every run of N cut to `maximum`, letter by letter: the plain version of the trim.
inline std::string TrimRuns(std::string_view text, std::size_t maximum) {
  std::string out;
  std::size_t run = 0;
  for (const char letter : text) {
    run = letter == 'N' ? run + 1 : 0;
    if (run <= maximum) out.push_back(letter);
  }
  return out;
}

inline std::string Pair(std::string_view caption, std::uint64_t all, std::uint64_t kept) {
  return std::string(caption) + std::to_string(all) + " " + std::to_string(kept) + "\n";
}

inline std::string PlainReport(const PlainJoin& join, std::size_t outLength,
                               std::uint32_t minContig, std::int32_t maxN,
                               const std::string& filler) {
  const PlainTally& all = join.all;
  const PlainTally& kept = join.kept;
  return "Clean-Join      IN   OUT\n" + Pair("Contigs - ", join.records, join.keptRecords) +
         "All letters - " + std::to_string(all.Acgt() + all.n) + "   " + std::to_string(outLength) +
         "\n" + Pair("Unambiguous letters - ", all.Acgt(), kept.Acgt()) +
         Pair("A - ", all.a, kept.a) + Pair("C - ", all.c, kept.c) + Pair("G - ", all.g, kept.g) +
         Pair("T - ", all.t, kept.t) + Pair("N - ", all.n, kept.n) + "Parameters:\n" +
         "  Minimum of unambiguous letters per record: " + std::to_string(minContig) + "\n" +
         "  Trim down substrings \"N...N\" to maximum length: " + std::to_string(maxN) + "\n" +
         "  Connect records using gap filler: " + filler + "\n" +
         "  Minimum of unambiguous letters in output: 1\n";
}

// ---- Random inputs ----

// FASTA text with what the reader must cope with: text before the first header, empty records,
// carriage returns, digits and blanks in sequence lines, soft-masked and ambiguous letters, a
// ">" inside a line, and runs of N of every length.
inline std::string RandomFasta(std::mt19937& random, std::size_t records) {
  const auto pick = [&](int below) { return static_cast<int>(random() % below); };
  std::string text;
  if (pick(4) == 0) text += "  \n";
  if (pick(4) == 0) text += "ACNNG\n";
  for (std::size_t r = 0; r < records; ++r) {
    text += ">r" + std::to_string(r);
    if (pick(3) == 0) text += " some words";
    text += pick(5) == 0 ? "\r\n" : "\n";
    const int length = pick(6) == 0 ? 0 : pick(300);
    for (int i = 0, column = 0; i < length; ++i) {
      const int kind = pick(40);
      if (kind < 4) {
        text.append(static_cast<std::size_t>(1 + pick(kind == 0 ? 60 : 8)), 'N');
      } else if (kind < 6) {
        text += "acgtun"[pick(6)];
      } else if (kind == 6) {
        text += "RYX 7-*"[pick(7)];
      } else {
        text += "ACGT"[pick(4)];
      }
      if (++column == 13) {
        text += pick(4) == 0 ? "\r\n" : "\n";
        column = 0;
      }
    }
    if (pick(30) == 0) text += ">inline";
    text += "\n";
  }
  return text;
}

inline constexpr std::size_t kBlockSizes[] = {1, 2, 3, 7, 16, 61, 500, kFastaBlockSize};

inline std::size_t RandomBlock(std::mt19937& random) {
  return kBlockSizes[random() % std::size(kBlockSizes)];
}

inline std::map<std::string, std::string> FilesOf(const test::ScratchDir& dir,
                                                  std::string_view prefix) {
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(dir.Path(""))) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with(prefix)) files[name] = test::ReadFile(entry.path().string());
  }
  return files;
}

inline std::string PlainLines(std::string letters, std::size_t width, bool soft) {
  if (soft) {
    std::size_t run = 0;
    for (char& letter : letters) {
      if (std::string_view("acgt").find(letter) == std::string_view::npos) {
        run = 0;
        continue;
      }
      letter = ++run <= 1000 ? 'N' : ' ';
    }
  }
  std::string out;
  if (width == 0) width = letters.size();
  for (std::size_t pos = 0; pos < letters.size(); pos += width) {
    out += letters.substr(pos, width) + "\n";
  }
  return out;
}

// Whole records and fixed-size pieces, with and without soft-masked letters. Cutting at runs of
// N (the pieces' own tests cover it) is compared between the block sizes instead.

}  // namespace genetrain::streamed

#endif
