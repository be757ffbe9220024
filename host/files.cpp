#include "files.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <sys/stat.h>
#include <sys/xattr.h>
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

Bytes read_all(int file, size_t expected, const std::string& name) {
  Bytes bytes;
  size_t filled = 0;
  for (;;) {
    if (expected > kMaxFile || filled > kMaxFile)
      throw Failure(name + ": is larger than 2 GiB, too large for a picture");
    bytes.resize(std::max(expected, filled) + 65536);
    const ssize_t count = ::read(file, bytes.data() + filled, bytes.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw Failure(name + ": cannot be read (" + reason() + ")");
    if (count == 0) break;
    filled += static_cast<size_t>(count);
  }
  bytes.resize(filled);
  return bytes;
}

bool write_all(int file, const Bytes& bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = ::write(file, bytes.data() + done, bytes.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    done += static_cast<size_t>(count);
  }
  return true;
}

// What is noted at a file under a name.
struct Attribute {
  std::string name;
  Bytes value;
};

struct Belonging {
  mode_t mode;
  std::optional<std::pair<uid_t, gid_t>> owner;  // nothing: whose runs the program
  std::vector<Attribute> attributes = {};
};

// The permissions of further users and groups. Where there are any, the mode means something else.
constexpr char kAccessList[] = "system.posix_acl_access";

// The access list, and what programs note for people: tags, ratings.
std::vector<Attribute> attributes_of(const fs::path& path) {
  std::vector<Attribute> attributes;
  std::string names(64 << 10, '\0');  // the most that Linux gives, and so for a value
  const ssize_t length = ::listxattr(path.c_str(), names.data(), names.size());
  for (size_t at = 0; length > 0 && at < static_cast<size_t>(length);) {
    const std::string name = names.c_str() + at;
    at += name.size() + 1;
    if (name != kAccessList && !name.starts_with("user.")) continue;
    Bytes value(64 << 10);
    const ssize_t size = ::getxattr(path.c_str(), name.c_str(), value.data(), value.size());
    if (size < 0) continue;
    value.resize(static_cast<size_t>(size));
    attributes.push_back({name, std::move(value)});
  }
  return attributes;
}

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

// Counted while the temporary files are locked, so that the handler's sentence is exact.
size_t files_to_write = 0, files_written = 0;
bool after_a_bar = false;

// A handler may not allocate.
void say_how_far() {
  char text[96] = "\r\033[K";
  char* end = text + (after_a_bar ? 4 : 0);
  const auto append = [&](std::string_view words) { end = std::ranges::copy(words, end).out; };
  const auto append_number = [&](size_t n) { end = std::to_chars(end, std::end(text), n).ptr; };
  append("roxe: interrupted: ");
  append_number(files_written);
  append(" of ");
  append_number(files_to_write);
  append(" done\n");
  [[maybe_unused]] const ssize_t said =
      ::write(STDERR_FILENO, text, static_cast<size_t>(end - text));
}

// Never unlocks: until the program has ended, no other thread may make a temporary file or rename
// one.
void remove_temporaries_and_die(int signal) {
  lock_temporaries();
  if (files_to_write > 0) say_how_far();
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

  bool write(const Bytes& bytes, const Belonging& belonging,
             const std::optional<timespec>& modified) {
    if (!write_all(file_.number(), bytes)) return false;
    if (modified) {
      const timespec times[2] = {{0, UTIME_OMIT}, *modified};
      if (::futimens(file_.number(), times) != 0) return false;
    }
    for (const Attribute& attribute : belonging.attributes)
      if (attribute.name != kAccessList) note(attribute);  // no picture fails for want of a tag
    // Only root may give files away; the permissions come last, for this would take some of them.
    if (belonging.owner &&
        ::fchown(file_.number(), belonging.owner->first, belonging.owner->second) != 0 &&
        ::geteuid() == 0)
      return false;
    if (::fchmod(file_.number(), belonging.mode) != 0) return false;
    for (const Attribute& attribute : belonging.attributes)
      if (attribute.name == kAccessList && !note(attribute)) return false;
    return ::fsync(file_.number()) == 0 && file_.close();
  }

  // Without replacing, an error says that the target exists, whoever has made it meanwhile.
  bool rename(const fs::path& target, bool replace) {
    const TemporariesLock lock;
    const unsigned flags = replace ? 0 : RENAME_NOREPLACE;
    if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target.c_str(), flags) != 0) {
      // Some file systems cannot refuse by themselves.
      if (errno != EINVAL || replace || fs::exists(fs::symlink_status(target)) ||
          ::rename(path_.c_str(), target.c_str()) != 0)
        return false;
    }
    file_was_made_ = false;
    ++files_written;
    return true;
  }

 private:
  bool note(const Attribute& attribute) {
    return ::fsetxattr(file_.number(), attribute.name.c_str(), attribute.value.data(),
                       attribute.value.size(), 0) == 0;
  }

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

// What the replaced file has, or a new file gets.
Belonging belonging_for(const fs::path& target) {
  struct stat status;
  if (::stat(target.c_str(), &status) == 0)
    return {status.st_mode & 07777, std::pair(status.st_uid, status.st_gid), attributes_of(target)};
  static const mode_t mask = [] {  // the mask can only be read by setting it
    const mode_t old = ::umask(077);
    ::umask(old);
    return old;
  }();
  return {0666 & ~mask, {}};
}

}  // namespace

std::string name_of_input(const std::string& path) {
  return path == kStandardStream ? "standard input" : path;
}

std::string name_of_output(const std::string& path) {
  return path == kStandardStream ? "standard output" : path;
}

Bytes read_file(const std::string& path) {
  if (path == kStandardStream) {
    static std::atomic_flag was_read;
    if (was_read.test_and_set())
      throw Failure(name_of_input(path) + ": can be read only once, as one picture");
    return read_all(STDIN_FILENO, 0, name_of_input(path));
  }
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) throw Failure(path + ": is a folder, not a picture");
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.number() < 0) throw Failure(path + ": cannot be opened (" + reason() + ")");
  struct stat status;
  const bool regular = ::fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode);
  return read_all(file.number(), regular ? static_cast<size_t>(status.st_size) : 0, path);
}

void check_writable(const std::string& path) {
  if (path == kStandardStream) {
    if (::isatty(STDOUT_FILENO)) throw Failure("a picture is not written on a terminal");
    return;
  }
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

void check_reachable(const std::string& path) {
  std::error_code none;
  fs::path folder = directory_of(path);
  if (fs::is_directory(folder, none)) return check_writable(path);
  while (!fs::exists(fs::symlink_status(folder, none))) folder = directory_of(folder);
  if (!fs::is_directory(folder, none))
    throw Failure(path + ": cannot be written, " + folder.string() + " is no folder");
  if (::access(folder.c_str(), W_OK | X_OK) != 0)
    throw Failure(path + ": cannot be written, the folder " + folder.string() + " refuses it (" +
                  reason() + ")");
}

void check_readable(const std::string& path) {
  if (path != kStandardStream && ::access(path.c_str(), R_OK) != 0)
    throw Failure(path + ": cannot be opened (" + reason() + ")");
}

std::optional<timespec> modification_time(const std::string& path) {
  struct stat status;
  if (path == kStandardStream) {
    if (::fstat(STDIN_FILENO, &status) != 0 || !S_ISREG(status.st_mode)) return {};
  } else if (::stat(path.c_str(), &status) != 0) {
    return {};
  }
  return status.st_mtim;
}

void write_file(const std::string& path, const Bytes& bytes, Existing existing,
                const std::optional<timespec>& modified) {
  if (path == kStandardStream) {
    if (!write_all(STDOUT_FILENO, bytes))
      throw Failure("standard output: cannot be written (" + reason() + ")");
    return;
  }
  const fs::path target = existing == Existing::kReplace ? target_of(path) : fs::path(path);
  TemporaryFile temporary(directory_of(target));
  if (!temporary.made() || !temporary.write(bytes, belonging_for(target), modified) ||
      !temporary.rename(target, existing != Existing::kKeep))
    throw Failure(path + ": cannot be written (" + reason() + ")");
}

void announce_writing(size_t files, bool after_bar) {
  const TemporariesLock lock;
  files_to_write = files;
  after_a_bar = after_bar;
}

std::optional<FileIdentity> identity_of(const std::string& path) {
  struct stat status;
  if (::stat(path.c_str(), &status) != 0) return {};
  return FileIdentity{status.st_dev, status.st_ino};
}

void keep_standard_streams() {
  // The lowest number that is free is the one that is given.
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (::fcntl(stream, F_GETFD) < 0 &&
        ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) != stream)
      std::_Exit(1);  // nobody could be told why
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
