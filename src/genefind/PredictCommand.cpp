#include "genefind/PredictCommand.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "common/InputStream.h"
#include "common/Output.h"
#include "predict/GeneModel.h"
#include "predict/Predict.h"
#include "predict/Writers.h"
#include "seq/FastaBlocks.h"
#include "seq/FastaScanner.h"
#include "seq/RecordId.h"

namespace genetrain {

namespace {

// A record as read: its letters stay raw text (line breaks included) until a worker takes it,
// so that the reading thread only copies bytes and the conversion to codes runs in parallel.
struct RecordJob {
  std::size_t index = 0;
  std::string id;
  std::string body;
};

// The texts one record adds to each output, made by the worker so that the writer only copies.
struct RecordText {
  std::string main, proteins, nucleotides;
  std::int64_t bases = 0;
};

RecordText TextOf(const std::string& id, std::span<const std::uint8_t> codes,
                  const std::vector<PredictedGene>& genes, const PredictOptions& options,
                  int geneticCode) {
  RecordText text;
  text.bases = static_cast<std::int64_t>(codes.size());
  if (options.format == GeneFormat::kGff) {
    AppendGff3Record(text.main, id, text.bases, genes);
  } else {
    AppendGeneSet(text.main, id, genes);
  }
  if (!options.proteins.empty()) AppendProteins(text.proteins, id, codes, genes, geneticCode);
  if (!options.nucleotides.empty()) AppendNucleotides(text.nucleotides, id, codes, genes);
  return text;
}

RecordText PredictRecord(const GeneModel& model, const PredictSettings& settings,
                         const PredictOptions& options, RecordJob& job) {
  std::vector<std::uint8_t> codes;
  AppendCodes(job.body, codes);
  std::string().swap(job.body);
  return TextOf(job.id, codes, PredictGenes(model, codes, settings), options, model.geneticCode);
}

// The output files of a run: the main output (GFF3 with its header, or a gene set, held to the
// end, where a second record makes it an error) and the optional FASTA files, each committed
// whole at the end.
class PredictionOutputs {
 public:
  explicit PredictionOutputs(const PredictOptions& options) : options_(options) {}
  bool Open() {
    return main_.Open(Name(options_.output)) &&
           (options_.proteins.empty() || proteins_.Open(Name(options_.proteins))) &&
           (options_.nucleotides.empty() || nucleotides_.Open(Name(options_.nucleotides)));
  }
  void Add(const RecordText& text) {
    Start();
    if (GeneSet()) {
      held_.append(text.main);
    } else {
      main_.Write(text.main);
    }
    if (!options_.proteins.empty()) proteins_.Write(text.proteins);
    if (!options_.nucleotides.empty()) nucleotides_.Write(text.nucleotides);
  }
  // False, with the message printed, for a gene set of several records, or a failed write.
  bool Finish(std::size_t records) {
    if (GeneSet() && records > 1) {
      std::fprintf(stderr,
                   "error: file <%s> holds %zu records and a gene set describes one: use -f "
                   "gff\n",
                   options_.input.c_str(), records);
      return false;
    }
    Start();
    main_.Write(held_);
    bool committed = main_.Commit();
    if (!options_.proteins.empty()) committed = proteins_.Commit() && committed;
    if (!options_.nucleotides.empty()) committed = nucleotides_.Commit() && committed;
    return committed;
  }

 private:
  static std::string Name(const std::string& name) { return name == "-" ? std::string() : name; }
  bool GeneSet() const { return options_.format == GeneFormat::kGenes; }
  // Nothing goes out before the first record is predicted, so that a FASTA file that cannot be
  // read leaves standard output empty.
  void Start() {
    if (started_) return;
    started_ = true;
    if (GeneSet()) return;
    std::string header;
    AppendGff3Header(header);
    main_.Write(header);
  }
  const PredictOptions& options_;
  OutputFile main_, proteins_, nucleotides_;
  bool started_ = false;
  std::string held_;
};

// Records done and bases per second, rewritten in place on a terminal a few times a second.
class Progress {
 public:
  explicit Progress(bool quiet) : shown_(!quiet && isatty(STDERR_FILENO) == 1) {}
  void Add(std::int64_t bases) {
    ++records_;
    bases_ += bases;
    if (!shown_) return;
    const Clock::time_point now = Clock::now();
    if (now - last_ < std::chrono::milliseconds(250)) return;
    last_ = now;
    Print();
  }
  void Finish() {
    if (!shown_ || records_ == 0) return;
    Print();
    std::fputc('\n', stderr);
  }

 private:
  using Clock = std::chrono::steady_clock;
  void Print() const {
    const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
    const double rate = seconds > 0 ? static_cast<double>(bases_) / seconds / 1e6 : 0.0;
    std::fprintf(stderr, "\rgenefind predict: %zu records, %.2f Mb/s", records_, rate);
    std::fflush(stderr);
  }
  bool shown_;
  std::size_t records_ = 0;
  std::int64_t bases_ = 0;
  Clock::time_point start_ = Clock::now(), last_ = start_;
};

// Hands the records to N workers through a bounded queue and gives their texts to the writer in
// input order. The records read, queued, predicted or waiting for an earlier one are bounded in
// number (kInFlightPerThread per thread) and in letters (kInFlightBytes, beyond one per thread),
// so memory follows the largest records, not the file. The bound is wide because output keeps
// input order: a worker that has finished may not take another record until the slowest record
// before it is written, and with 2 per thread the second worker of a metagenome's contigs (500 to
// 500,000 bases) waited a third of the time (2 threads: 0.75 of 1 thread's wall time; 0.53 with
// 16). One thread predicts in the reading thread itself.
class Pipeline {
 public:
  using Writer = std::function<void(const RecordText&)>;
  Pipeline(const GeneModel& model, const PredictSettings& settings, const PredictOptions& options,
           Writer writer)
      : model_(model), settings_(settings), options_(options), writer_(std::move(writer)) {
    const int threads = std::max(1, options.threads);
    threads_ = static_cast<std::size_t>(threads);
    limit_ = threads_ * kInFlightPerThread;
    if (threads == 1) return;
    for (int t = 0; t < threads; ++t) workers_.emplace_back([this] { Work(); });
  }
  ~Pipeline() { Stop(); }
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;

  void Submit(RecordJob job) {
    if (workers_.empty()) {
      writer_(PredictRecord(model_, settings_, options_, job));
      return;
    }
    std::unique_lock lock(mutex_);
    inFlightBytes_ += job.body.size();
    sizes_.push_back(job.body.size());
    jobs_.push_back(std::move(job));
    ++submitted_;
    jobReady_.notify_one();
    WriteWhile(lock, [this] {
      const std::size_t inFlight = submitted_ - written_;
      return inFlight >= limit_ || (inFlight >= threads_ && inFlightBytes_ >= kInFlightBytes);
    });
  }

  // Writes what is left and ends the workers.
  void Finish() {
    if (workers_.empty()) return;
    std::unique_lock lock(mutex_);
    WriteWhile(lock, [this] { return written_ < submitted_; });
    lock.unlock();
    Stop();
  }

 private:
  static constexpr std::size_t kInFlightPerThread = 16;
  static constexpr std::size_t kInFlightBytes = std::size_t{32} << 20;

  void Stop() {
    {
      const std::lock_guard lock(mutex_);
      closed_ = true;
      jobs_.clear();
    }
    jobReady_.notify_all();
    for (std::thread& worker : workers_) worker.join();
    workers_.clear();
  }

  void Work() {
    for (;;) {
      RecordJob job;
      {
        std::unique_lock lock(mutex_);
        jobReady_.wait(lock, [this] { return closed_ || !jobs_.empty(); });
        if (jobs_.empty()) return;
        job = std::move(jobs_.front());
        jobs_.pop_front();
      }
      RecordText text = PredictRecord(model_, settings_, options_, job);
      {
        const std::lock_guard lock(mutex_);
        done_.emplace(job.index, std::move(text));
      }
      resultReady_.notify_one();
    }
  }

  // Writes the finished records that are next in input order, waiting for more while `more`.
  template <typename More>
  void WriteWhile(std::unique_lock<std::mutex>& lock, More more) {
    for (;;) {
      for (auto next = done_.find(written_); next != done_.end(); next = done_.find(written_)) {
        const RecordText text = std::move(next->second);
        done_.erase(next);
        ++written_;
        inFlightBytes_ -= sizes_.front();
        sizes_.pop_front();
        lock.unlock();
        writer_(text);
        lock.lock();
      }
      if (!more()) return;
      resultReady_.wait(lock);
    }
  }

  const GeneModel& model_;
  const PredictSettings& settings_;
  const PredictOptions& options_;
  Writer writer_;
  std::size_t threads_ = 1, limit_ = 1;
  std::vector<std::thread> workers_;
  std::mutex mutex_;
  std::condition_variable jobReady_, resultReady_;
  std::deque<RecordJob> jobs_;
  std::map<std::size_t, RecordText> done_;
  std::deque<std::size_t> sizes_;  // the letters of each record in flight, in input order
  std::size_t submitted_ = 0, written_ = 0, inFlightBytes_ = 0;
  bool closed_ = false;
};

// Gathers each record of the FASTA splitter (its id: the label's first word) as base codes and
// hands it to the pipeline. For a gene set, records after the first are only counted.
class RecordSink {
 public:
  RecordSink(Pipeline& pipeline, bool onlyFirst) : pipeline_(pipeline), onlyFirst_(onlyFirst) {}
  void Begin() {
    ++records_;
    job_ = RecordJob{};
    job_.index = records_ - 1;
    id_.Reset();
  }
  void Label(std::string_view piece) { id_.Add(piece); }
  void Body(std::string_view piece) {
    if (Skipping()) return;
    job_.body.append(piece);
  }
  void End() {
    if (Skipping()) return;
    job_.id = id_.Take(records_);
    pipeline_.Submit(std::move(job_));
  }
  std::size_t Records() const { return records_; }

 private:
  bool Skipping() const { return onlyFirst_ && records_ > 1; }
  Pipeline& pipeline_;
  bool onlyFirst_;
  RecordJob job_;
  RecordId id_;
  std::size_t records_ = 0;
};

// The FASTA reading of the streaming commands, standard input included.
bool ReadRecords(const std::string& name, RecordSink& sink) {
  InputStream input(stdin, "standard input");
  if (name != "-" && !input.Open(name.c_str())) return false;
  return ReadFastaBlocks(input, kFastaBlockSize, sink);
}

}  // namespace

bool RunPredict(const PredictOptions& options) {
  GeneModel model;
  if (!LoadGeneModel(options.model, model)) return false;
  PredictSettings settings;
  settings.maxNRun = options.maxNRun;
  PredictionOutputs outputs(options);
  if (!outputs.Open()) return false;
  Progress progress(options.quiet);
  Pipeline pipeline(model, settings, options, [&](const RecordText& text) {
    outputs.Add(text);
    progress.Add(text.bases);
  });
  RecordSink sink(pipeline, options.format == GeneFormat::kGenes);
  const bool read = ReadRecords(options.input, sink);
  if (read) pipeline.Finish();
  progress.Finish();
  return read && outputs.Finish(sink.Records());
}

bool WritePredictions(const PredictOptions& options, const std::vector<std::string>& ids,
                      const std::vector<std::vector<std::uint8_t>>& records,
                      const std::vector<std::vector<PredictedGene>>& genes, int geneticCode) {
  PredictionOutputs outputs(options);
  if (!outputs.Open()) return false;
  const std::size_t count = options.format == GeneFormat::kGenes ? 1 : records.size();
  for (std::size_t r = 0; r < std::min(count, records.size()); ++r) {
    outputs.Add(TextOf(ids[r], records[r], genes[r], options, geneticCode));
  }
  return outputs.Finish(records.size());
}

}  // namespace genetrain
