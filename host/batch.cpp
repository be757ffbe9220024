#include "batch.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>

#include "errors.h"
#include "files.h"
#include "picture_file.h"
#include "terminal.h"

namespace host {
namespace {

namespace fs = std::filesystem;

// ------------------------------------------------------------------------ what is read and written

bool has_name_of_picture(const fs::path& path) {
  static const std::set<std::string> kExtensions = {".jpg", ".jpeg", ".png",  ".ppm", ".pgm",
                                                    ".pnm", ".tif",  ".tiff", ".webp"};
  std::string extension = path.extension().string();
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return kExtensions.contains(extension);
}

// The photographs in a folder and those below it, by name; not what lies in the folder of results.
// Counts the folders below that cannot be read.
std::vector<fs::path> photographs_in(const fs::path& named, const fs::path& results,
                                     size_t& closed_folders) {
  std::vector<fs::path> found, folders = {named};
  while (!folders.empty()) {
    const fs::path folder = std::move(folders.back());
    folders.pop_back();
    std::error_code error, none;
    fs::directory_iterator entry(folder, error);
    for (; entry != fs::directory_iterator(); entry.increment(error)) {
      if (entry->path().filename().string().starts_with(".")) continue;
      if (entry->is_directory(none)) {
        if (!entry->is_symlink(none) && !fs::equivalent(entry->path(), results, none))
          folders.push_back(entry->path());
      } else if (has_name_of_picture(entry->path()) &&
                 !fs::is_other(entry->status(none))) {  // whoever opens a pipe may wait for ever
        found.push_back(entry->path());
      }
    }
    if (!error) continue;
    const std::string reason =
        folder.string() + ": the folder cannot be read (" + error.message() + ")";
    if (folder == named) throw Failure(reason);
    complain(reason);
    ++closed_folders;
  }
  if (found.empty()) throw Failure(named.string() + ": there is no photograph in this folder");
  std::ranges::sort(found);
  return found;
}

struct Photograph {
  std::string input, target;
};

fs::path normal_path(const fs::path& path) { return fs::absolute(path).lexically_normal(); }

fs::path without_slash(const fs::path& path) {
  return path.has_filename() ? path : path.parent_path();
}

fs::path common_part(const fs::path& one, const fs::path& other) {
  fs::path common;
  for (auto i = one.begin(), j = other.begin(); i != one.end() && j != other.end() && *i == *j;
       ++i, ++j)
    common /= *i;
  return common;
}

// -------------------------------------------------------------------------- what must not be lost

// Says of each target whether it may be written.
class Targets {
 public:
  Targets(const BatchJob& job, const std::vector<Photograph>& photographs) : job_(job) {
    for (const Photograph& photograph : photographs)
      if (const auto identity = identity_of(photograph.input))
        precious_.emplace(*identity, "the photograph " + photograph.input);
    for (const std::string& mask : job.masks)
      if (const auto identity = identity_of(mask))
        precious_.emplace(*identity, mask + ", which the recipe names");
    if (const auto identity = identity_of(job.recipe))
      precious_.emplace(*identity, "the recipe " + job.recipe);
  }

  // Throws Failure for a reason not to write; false for a result that is there already.
  bool may_write(const Photograph& photograph) {
    const std::string& target = photograph.target;
    if (has_name_of_picture(target) && !format_of_name(target))
      throw Failure(photograph.input +
                    ": its format can be read and not written; --format names another");
    if (const std::string link = link_on_the_way(target); !link.empty())
      throw Failure(photograph.input + ": " + link + " is a link, and a batch follows none");
    const auto identity = identity_of(target);
    if (!identity) return true;
    if (identity == identity_of(photograph.input))
      throw Failure(photograph.input + ": the result would replace the photograph itself");
    if (const auto found = precious_.find(*identity); found != precious_.end())
      throw Failure(photograph.input + ": the result would replace " + found->second);
    {
      const std::lock_guard lock(mutex_);
      if (results_.contains(*identity))
        throw Failure(photograph.input + ": " + target + " is the result of another photograph");
    }
    if (job_.skip_existing) return false;
    if (job_.settings.existing == Existing::kKeep)
      throw Failure(target +
                    ": exists already (--overwrite replaces it, --skip-existing leaves "
                    "it as it is)");
    return true;
  }

  void written(const Photograph& photograph) {
    const std::lock_guard lock(mutex_);
    if (const auto identity = identity_of(photograph.target)) results_.insert(*identity);
  }

 private:
  // The first link below the folder of results.
  std::string link_on_the_way(const fs::path& target) const {
    fs::path place = job_.directory;
    for (const fs::path& part : target.lexically_relative(job_.directory)) {
      place /= part;
      std::error_code none;
      if (fs::is_symlink(fs::symlink_status(place, none))) return place.string();
    }
    return "";
  }

  const BatchJob& job_;
  std::map<FileIdentity, std::string> precious_;  // as sentences call them
  std::mutex mutex_;
  std::set<FileIdentity> results_;
};

// ----------------------------------------------------------------------------- what is said about it

class Progress {
 public:
  Progress(const BatchJob& job, size_t all) : job_(job) {
    counts_.all = all;
    draw();
  }
  ~Progress() { wipe(); }

  void advance(const Notes& notes, const std::string& failure, bool skipped) {
    const std::lock_guard lock(mutex_);
    ++finished_;
    counts_.failed += !failure.empty();
    counts_.skipped += skipped;
    if (!notes.empty() || !failure.empty()) wipe();
    for (const std::string& note : notes) complain("note: " + note);
    if (!failure.empty()) complain(failure);
    draw();
  }

  const BatchCounts& counts() const { return counts_; }

 private:
  std::string how_far() const {
    const size_t done = finished_ - counts_.failed - counts_.skipped;
    std::string text = std::to_string(done) + " of " + std::to_string(counts_.all) + " done";
    if (counts_.skipped > 0) text += ", " + std::to_string(counts_.skipped) + " left as they were";
    if (counts_.failed > 0) text += ", " + std::to_string(counts_.failed) + " failed";
    return text;
  }

  void draw() {
    if (job_.draws_bar) {
      constexpr size_t kWidth = 30;
      const size_t filled = kWidth * finished_ / counts_.all;
      const std::string bar = std::string(filled, '#') + std::string(kWidth - filled, '-');
      std::fprintf(stderr, "\r[%s] %s", bar.c_str(), how_far().c_str());
      std::fflush(stderr);
      return;
    }
    const auto now = std::chrono::steady_clock::now();
    const bool last = finished_ == counts_.all;  // the summary says as much
    if (finished_ == 0 || last || now - said_ < std::chrono::seconds(job_.progress_seconds)) return;
    complain(how_far());
    said_ = now;
  }

  void wipe() const {
    if (job_.draws_bar) std::fputs("\r\033[K", stderr);
  }

  const BatchJob& job_;
  std::mutex mutex_;
  size_t finished_ = 0;
  BatchCounts counts_;
  std::chrono::steady_clock::time_point said_ = std::chrono::steady_clock::now();
};

// --------------------------------------------------------------------------------- what is done

void process(const BatchJob& job, const Recipe& recipe, const Photograph& photograph,
             Targets& targets, Notes& notes) {
  LoadedPicture loaded = load_picture(photograph.input, job.reading, notes);
  // After the input, so that a text is refused as what it is.
  check_reachable(photograph.target);
  std::error_code error;
  const fs::path folder = fs::path(photograph.target).parent_path();
  if (!fs::create_directories(folder, error) && error)
    throw Failure(photograph.target + ": the folder cannot be made (" + error.message() + ")");
  const Target target(photograph.target);
  Outcome outcome;
  try {
    outcome = apply(recipe, loaded.picture, job.reading.background);
  } catch (const std::runtime_error& error) {
    throw Failure(photograph.input + ": " + error.what());
  }
  if (!outcome.note.empty()) notes.push_back(photograph.input + ": " + outcome.note);
  const Picture& picture = loaded.picture;
  if (!outcome.changed && !job.writes_anew && can_be_copied(loaded, target, job.settings)) {
    notes = {photograph.target + ": nothing was to be done, copied as it is"};
    write_picture(target, loaded.file, picture, job.settings);
  } else {
    write_picture(target, encode_for(target, picture, job.settings, notes), picture, job.settings);
  }
  targets.written(photograph);
}

// The reason of failure, or nothing.
template <typename Work>
std::string attempt(const Photograph& photograph, const Work& work) {
  try {
    work();
    return "";
  } catch (const std::bad_alloc&) {
    return photograph.input + ": there is not enough memory for this picture";
  } catch (const std::exception& error) {
    return error.what();
  }
}

// The photographs of a job and where their results go.
std::vector<Photograph> photographs_of(const BatchJob& job, size_t& closed_folders) {
  std::vector<fs::path> files;
  fs::path common;
  std::error_code none;
  for (const std::string& input : job.inputs) {
    const bool is_folder = fs::is_directory(input, none);
    if (is_folder)
      std::ranges::copy(photographs_in(input, job.directory, closed_folders),
                        std::back_inserter(files));
    else
      files.push_back(input);
    const fs::path folder =
        is_folder ? without_slash(normal_path(input)) : normal_path(input).parent_path();
    common = common.empty() ? folder : common_part(common, folder);
  }

  std::vector<Photograph> photographs;
  std::map<std::string, std::string> taken;
  for (const fs::path& file : files) {
    fs::path name = normal_path(file).lexically_relative(common);
    if (!job.extension.empty()) name.replace_extension(job.extension);
    const std::string target = (fs::path(job.directory) / name).string();
    const auto [place, is_new] = taken.emplace(target, file.string());
    if (!is_new)
      throw UsageError(place->second + " and " + file.string() + " would both become " + target);
    photographs.push_back({file.string(), target});
  }
  return photographs;
}

}  // namespace

BatchCounts rehearse_batch(const BatchJob& job) {
  BatchCounts counts;
  const std::vector<Photograph> photographs = photographs_of(job, counts.closed_folders);
  Targets targets(job, photographs);
  counts.all = photographs.size();
  for (const Photograph& photograph : photographs) {
    bool writes = false;
    const std::string failure = attempt(photograph, [&] {
      writes = targets.may_write(photograph);
      if (!writes) return;
      check_readable(photograph.input);
      check_reachable(photograph.target);
    });
    counts.failed += !failure.empty();
    counts.skipped += failure.empty() && !writes;
    if (!failure.empty())
      complain(failure);
    else
      say(printable(photograph.input) + " -> " + printable(photograph.target) +
          (writes ? "" : " (exists, left as it is)"));
  }
  return counts;
}

BatchCounts run_batch(const BatchJob& job, const Recipe& recipe) {
  size_t closed_folders = 0;
  const std::vector<Photograph> photographs = photographs_of(job, closed_folders);
  std::error_code error;
  fs::create_directories(job.directory, error);
  if (error || !fs::is_directory(job.directory))
    throw Failure(job.directory + ": the folder cannot be made (" +
                  (error ? error.message() : "a file has this name") + ")");

  Targets targets(job, photographs);
  Progress progress(job, photographs.size());
  announce_writing(photographs.size(), job.draws_bar);
  std::atomic<size_t> next = 0;
  const auto work = [&] {
    for (size_t i = next++; i < photographs.size(); i = next++) {
      bool writes = false;
      Notes notes;
      const std::string failure = attempt(photographs[i], [&] {
        writes = targets.may_write(photographs[i]);
        if (writes) process(job, recipe, photographs[i], targets, notes);
      });
      progress.advance(notes, failure, failure.empty() && !writes);
    }
  };

  const unsigned processors = std::max(1u, std::thread::hardware_concurrency());
  const size_t wanted = job.at_a_time > 0 ? static_cast<size_t>(job.at_a_time) : processors;
  std::vector<std::jthread> others;
  try {
    for (size_t i = 1; i < std::min(wanted, photographs.size()); ++i) others.emplace_back(work);
  } catch (const std::exception&) {  // the system gives no more threads; those at hand do the work
  }
  work();
  others.clear();  // waits for them
  announce_writing(0, false);
  BatchCounts counts = progress.counts();
  counts.closed_folders = closed_folders;
  return counts;
}

}  // namespace host
