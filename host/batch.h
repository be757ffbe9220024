// One recipe over many photographs, several at a time.
#ifndef ROXE_HOST_BATCH_H_
#define ROXE_HOST_BATCH_H_

#include <string>
#include <vector>

#include "codecs.h"
#include "recipe.h"

namespace host {

struct BatchJob {
  std::vector<std::string> inputs;
  std::string directory;  // receives the results; made if it is missing
  std::string extension;  // of the results, with its point; empty: as the input
  int at_a_time = 0;      // 0: as many as the machine has processors
  ReadSettings reading;
  WriteSettings settings;
};

struct BatchResult {
  std::string input;
  std::string failure;  // empty on success
  Notes notes;
};

// Throws UsageError where two results would have the same name, Failure where the directory cannot
// be made. A photograph that fails does not stop the others. The bar is drawn on stderr.
std::vector<BatchResult> run_batch(const BatchJob& job, const Recipe& recipe, bool show_progress);

}  // namespace host

#endif  // ROXE_HOST_BATCH_H_
