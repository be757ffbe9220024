// One recipe over many photographs, several at a time.
#ifndef ROXE_HOST_BATCH_H_
#define ROXE_HOST_BATCH_H_

#include <string>
#include <vector>

#include "codecs.h"
#include "recipe.h"

namespace host {

struct BatchJob {
  std::vector<std::string> inputs;  // files, and folders of photographs
  std::string recipe;               // its file, and those of its masks: no result replaces them
  std::vector<std::string> masks;
  std::string directory;       // receives the results; made if it is missing
  std::string extension;       // of the results, with its point; empty: as the input
  bool skip_existing = false;  // a result that exists is left as it is, without complaint
  bool writes_anew = false;    // also what no operation has changed
  int at_a_time = 0;           // 0: as many as the machine has processors
  int progress_seconds = 5;    // between lines of progress where there is no terminal
  bool draws_bar = false;      // stderr is a terminal
  ReadSettings reading;
  WriteSettings settings;
};

struct BatchCounts {
  size_t all = 0, failed = 0, skipped = 0;
  size_t closed_folders = 0;  // below those that were named; they cannot be read
  size_t done() const { return all - failed - skipped; }
};

// Throws UsageError where two results would have the same name, Failure for a folder without
// photographs and where the directory cannot be made. Each result keeps the path of its photograph
// below the folder that all inputs have in common. A photograph that fails, or a folder that cannot
// be read below one that was named, does not stop the others: the reason is printed as it happens.
// Replaces no input, whatever its name, and follows no link below the directory.
BatchCounts run_batch(const BatchJob& job, const Recipe& recipe);

// Prints what run_batch would write, and why not as far as can be told without reading a picture.
BatchCounts rehearse_batch(const BatchJob& job);

}  // namespace host

#endif  // ROXE_HOST_BATCH_H_
