#include "batch.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>

#include "errors.h"
#include "picture_file.h"

namespace host {
namespace {

namespace fs = std::filesystem;

std::string target_of(const BatchJob& job, const std::string& input) {
  fs::path name = fs::path(input).filename();
  if (!job.extension.empty()) name.replace_extension(job.extension);
  return (fs::path(job.directory) / name).string();
}

std::vector<std::string> targets_of(const BatchJob& job) {
  std::vector<std::string> targets;
  std::map<std::string, std::string> taken;
  for (const std::string& input : job.inputs) {
    const std::string target = target_of(job, input);
    const auto [place, is_new] = taken.emplace(target, input);
    if (!is_new) throw UsageError(place->second + " and " + input + " would both become " + target);
    targets.push_back(target);
  }
  return targets;
}

class ProgressBar {
 public:
  ProgressBar(size_t total, bool shown) : total_(total), shown_(shown) { draw(); }
  ~ProgressBar() {
    if (shown_) std::fputs("\r\033[K", stderr);
  }
  void advance(bool failed) {
    const std::lock_guard lock(mutex_);
    ++done_;
    failed_ += failed;
    draw();
  }

 private:
  void draw() const {
    if (!shown_) return;
    constexpr size_t kWidth = 30;
    const size_t filled = kWidth * done_ / total_;
    const std::string bar = std::string(filled, '#') + std::string(kWidth - filled, '-');
    std::fprintf(stderr, "\r[%s] %zu of %zu", bar.c_str(), done_, total_);
    if (failed_ > 0) std::fprintf(stderr, ", %zu failed", failed_);
    std::fflush(stderr);
  }

  const size_t total_;
  const bool shown_;
  std::mutex mutex_;
  size_t done_ = 0, failed_ = 0;
};

void process(const BatchJob& job, const Recipe& recipe, const std::string& target,
             BatchResult& result) {
  try {
    std::error_code none;
    if (fs::equivalent(result.input, target, none))
      throw Failure(result.input + ": the result would replace the photograph itself");
    Picture picture = load_picture(result.input, job.reading, result.notes).picture;
    check_target(target);  // after the input, so that a folder or a text is refused as what it is
    try {
      for (const auto& operation : recipe) operation->apply(picture, job.reading.background);
    } catch (const std::runtime_error& error) {
      throw Failure(result.input + ": " + error.what());
    }
    save_picture(picture, target, job.settings, result.notes);
  } catch (const std::bad_alloc&) {
    result.failure = result.input + ": there is not enough memory for this picture";
  } catch (const std::exception& error) {
    result.failure = error.what();
  }
}

}  // namespace

std::vector<BatchResult> run_batch(const BatchJob& job, const Recipe& recipe, bool show_progress) {
  const std::vector<std::string> targets = targets_of(job);
  std::error_code error;
  fs::create_directories(job.directory, error);
  if (error || !fs::is_directory(job.directory))
    throw Failure(job.directory + ": the folder cannot be made (" +
                  (error ? error.message() : "a file has this name") + ")");

  std::vector<BatchResult> results;
  for (const std::string& input : job.inputs) results.push_back({input, "", {}});
  ProgressBar bar(results.size(), show_progress);
  std::atomic<size_t> next = 0;
  const auto work = [&] {
    for (size_t i = next++; i < results.size(); i = next++) {
      process(job, recipe, targets[i], results[i]);
      bar.advance(!results[i].failure.empty());
    }
  };

  const unsigned processors = std::max(1u, std::thread::hardware_concurrency());
  const size_t wanted = job.at_a_time > 0 ? static_cast<size_t>(job.at_a_time) : processors;
  std::vector<std::jthread> others;
  try {
    for (size_t i = 1; i < std::min(wanted, results.size()); ++i) others.emplace_back(work);
  } catch (const std::exception&) {  // the system gives no more threads; those at hand do the work
  }
  work();
  others.clear();  // waits for them
  return results;
}

}  // namespace host
