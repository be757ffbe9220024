// Files as a whole: read at once, written so that a reader sees the old content or the new one.
#ifndef ROXE_HOST_FILES_H_
#define ROXE_HOST_FILES_H_

#include <ctime>
#include <optional>
#include <string>

#include "picture.h"

namespace host {

// Throws Failure with a sentence that names the file.
Bytes read_file(const std::string& path);

// Fails early where write_file could not succeed: no such directory, not a regular file.
void check_writable(const std::string& path);

// Writes a temporary file next to the target and renames it. A symbolic link is followed.
// With a time, the file is as if it had been changed then.
void write_file(const std::string& path, const Bytes& bytes,
                const std::optional<timespec>& modified = {});

// Nothing if there is no such file.
std::optional<timespec> modification_time(const std::string& path);

// From now on an interrupted program takes its temporary files away before it ends, and a limit on
// the size of files makes write_file fail instead of ending the program.
void prepare_for_signals();

}  // namespace host

#endif  // ROXE_HOST_FILES_H_
