#include "files.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include "errors.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr size_t kMaxFile = size_t{2} << 30;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return number_; }
  // Closing may report that an earlier write did not reach the disk.
  bool close() { return ::close(std::exchange(number_, -1)) == 0; }

 private:
  int number_;
};

std::string reason() { return std::generic_category().message(errno); }

// The names of the temporary files in use, for the signal handler: plain memory behind a flag that
// a handler may wait for.
struct TemporaryName {
  bool used;
  char path[PATH_MAX];
};
constexpr int kMostTemporaries = 64;
TemporaryName temporaries[kMostTemporaries];
std::atomic_flag temporaries_locked;

void lock_temporaries() {
  while (temporaries_locked.test_and_set()) ::sched_yield();
}

// Held while a temporary file comes or goes. Signals wait, so a handler never waits for the thread
// that it has interrupted.
class TemporariesLock {
 public:
  TemporariesLock() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, &old_mask_);
    lock_temporaries();
  }
  ~TemporariesLock() {
    temporaries_locked.clear();
    ::pthread_sigmask(SIG_SETMASK, &old_mask_, nullptr);
  }
  TemporariesLock(const TemporariesLock&) = delete;
  TemporariesLock& operator=(const TemporariesLock&) = delete;

 private:
  sigset_t old_mask_;
};

// Never unlocks: until the program has ended, no other thread may make a temporary file.
void remove_temporaries_and_die(int signal) {
  lock_temporaries();
  for (TemporaryName& name : temporaries)
    if (name.used) ::unlink(name.path);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

// A temporary file that is gone at the end of its life, unless renamed before.
class TemporaryFile {
 public:
  explicit TemporaryFile(const fs::path& directory)
      : path_((directory / ".roxe-XXXXXX").string()), file_(make()) {}
  ~TemporaryFile() {
    const TemporariesLock lock;
    if (file_was_made_) ::unlink(path_.c_str());
    if (name_) name_->used = false;
  }

  bool made() const { return file_was_made_; }

  bool write(const Bytes& bytes, mode_t mode, const std::optional<timespec>& modified) {
    size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t count = ::write(file_.number(), bytes.data() + done, bytes.size() - done);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return false;
      done += static_cast<size_t>(count);
    }
    if (modified) {
      const timespec times[2] = {{0, UTIME_OMIT}, *modified};
      if (::futimens(file_.number(), times) != 0) return false;
    }
    return ::fchmod(file_.number(), mode) == 0 && ::fsync(file_.number()) == 0 && file_.close();
  }

  bool rename(const fs::path& target) {
    if (::rename(path_.c_str(), target.c_str()) != 0) return false;
    file_was_made_ = false;
    return true;
  }

 private:
  int make() {
    const TemporariesLock lock;
    const int number = ::mkostemp(path_.data(), O_CLOEXEC);
    if (number < 0 || path_.size() >= PATH_MAX) return number;
    const auto end = std::end(temporaries);
    const auto name = std::find_if(std::begin(temporaries), end,
                                   [](const TemporaryName& known) { return !known.used; });
    if (name == end) return number;
    std::memcpy(name->path, path_.c_str(), path_.size() + 1);
    name->used = true;
    name_ = name;
    return number;
  }

  std::string path_;
  TemporaryName* name_ = nullptr;
  Descriptor file_;
  bool file_was_made_ = file_.number() >= 0;
};

// Where a path leads: through symbolic links if it exists.
fs::path target_of(const std::string& path) {
  std::error_code error;
  const fs::path target = fs::canonical(path, error);
  return error ? fs::path(path) : target;
}

fs::path directory_of(const fs::path& target) {
  return target.has_parent_path() ? target.parent_path() : fs::path(".");
}

// The permissions that the replaced file has, or those of a new file.
mode_t mode_for(const fs::path& target) {
  struct stat status;
  if (::stat(target.c_str(), &status) == 0) return status.st_mode & 07777;
  static const mode_t mask = [] {  // the mask can only be read by setting it
    const mode_t old = ::umask(077);
    ::umask(old);
    return old;
  }();
  return 0666 & ~mask;
}

}  // namespace

Bytes read_file(const std::string& path) {
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) throw Failure(path + ": is a folder, not a picture");
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.number() < 0) throw Failure(path + ": cannot be opened (" + reason() + ")");
  Bytes bytes;
  struct stat status;
  const bool regular = ::fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode);
  size_t expected = regular ? static_cast<size_t>(status.st_size) : 0;
  size_t filled = 0;
  for (;;) {
    if (expected > kMaxFile || filled > kMaxFile)
      throw Failure(path + ": is larger than 2 GiB, too large for a picture");
    bytes.resize(std::max(expected, filled) + 65536);
    const ssize_t count = ::read(file.number(), bytes.data() + filled, bytes.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw Failure(path + ": cannot be read (" + reason() + ")");
    if (count == 0) break;
    filled += static_cast<size_t>(count);
  }
  bytes.resize(filled);
  return bytes;
}

void check_writable(const std::string& path) {
  const fs::path target = target_of(path), directory = directory_of(target);
  std::error_code error;
  const fs::file_status status = fs::status(target, error);
  if (fs::is_directory(status)) throw Failure(path + ": is a folder, so it cannot be written");
  if (fs::exists(status) && !fs::is_regular_file(status))
    throw Failure(path + ": is not a regular file, so it is not replaced");
  if (fs::exists(status) && ::access(target.c_str(), W_OK) != 0)
    throw Failure(path + ": is write-protected, so it is not replaced");
  if (fs::is_symlink(target, error))  // had it led somewhere, target would be that place
    throw Failure(path + ": is a link that leads nowhere, so it cannot be written");
  if (!fs::is_directory(directory, error))
    throw Failure(path + ": cannot be written, there is no folder " + directory.string());
  if (::access(directory.c_str(), W_OK | X_OK) != 0)
    throw Failure(path + ": cannot be written, the folder refuses it (" + reason() + ")");
}

std::optional<timespec> modification_time(const std::string& path) {
  struct stat status;
  if (::stat(path.c_str(), &status) != 0) return {};
  return status.st_mtim;
}

void write_file(const std::string& path, const Bytes& bytes,
                const std::optional<timespec>& modified) {
  check_writable(path);
  const fs::path target = target_of(path);
  const mode_t mode = mode_for(target);
  TemporaryFile temporary(directory_of(target));
  if (!temporary.made() || !temporary.write(bytes, mode, modified) || !temporary.rename(target))
    throw Failure(path + ": cannot be written (" + reason() + ")");
}

void prepare_for_signals() {
  std::signal(SIGXFSZ, SIG_IGN);  // a file that would grow too large is an error of write()
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    struct sigaction old, ours = {};
    // A program started with nohup goes on ignoring the signal.
    if (::sigaction(signal, nullptr, &old) == 0 && old.sa_handler == SIG_IGN) continue;
    ours.sa_handler = remove_temporaries_and_die;
    ::sigfillset(&ours.sa_mask);  // a second signal must not wait for the first in the same thread
    ::sigaction(signal, &ours, nullptr);
  }
}

}  // namespace host
