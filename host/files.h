// Files as a whole: read at once, written so that a reader sees the old content or the new one.
#ifndef ROXE_HOST_FILES_H_
#define ROXE_HOST_FILES_H_

#include <ctime>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>

#include "picture.h"

namespace host {

// The path that stands for standard input or output.
inline constexpr char kStandardStream[] = "-";

// What people call a path: itself, but for kStandardStream.
std::string name_of_input(const std::string& path);
std::string name_of_output(const std::string& path);

// Throws Failure with a sentence that names the file.
Bytes read_file(const std::string& path);

// Fails where write_file could not succeed or would replace what is no regular file. Asked once, before
// the work.
void check_writable(const std::string& path);

// The same for a path whose folders may have to be made first.
void check_reachable(const std::string& path);

// Fails where read_file could not open a file.
void check_readable(const std::string& path);

enum class Existing {
  kReplace,           // through a symbolic link, whose target keeps permissions and owner
  kKeep,              // and fail
  kReplaceButNoLink,  // a link itself is replaced
};

// Writes a temporary file next to the target and renames it. With a time, the file is as if it had
// been changed then.
void write_file(const std::string& path, const Bytes& bytes, Existing existing = Existing::kReplace,
                const std::optional<timespec>& modified = {});

// Nothing if there is no such file, or what stands on standard input is none.
std::optional<timespec> modification_time(const std::string& path);

// From now on an interrupted program says how many of so many files it has written.
void announce_writing(size_t files, bool after_a_bar);

// Which file it is, whatever its name: the same for links to it. Nothing where there is none.
struct FileIdentity {
  uint64_t device, number;
  auto operator<=>(const FileIdentity&) const = default;
};
std::optional<FileIdentity> identity_of(const std::string& path);

// Sees to it that no file is opened under the number of a standard stream that is closed, where
// sentences would be written into it. Using the stream still fails.
void keep_standard_streams();

// From now on an interrupted program takes its temporary files away before it ends, and a limit on
// the size of files makes write_file fail instead of ending the program.
void prepare_for_signals();

}  // namespace host

#endif  // ROXE_HOST_FILES_H_
