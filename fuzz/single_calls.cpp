#include <optional>

#include "fuzz/scene.h"
#include "fuzz/targets.h"
#include "support/seams.h"

namespace fuzz {
namespace {

struct Outcome {
  Scene scene;
  Result result;

  bool operator==(const Outcome& other) const {
    return result == other.result && scene.same_bytes(other.scene);
  }
};

Outcome outcome_of(const Operations& operations, const Scene& before) {
  Outcome outcome = {before, {}};
  outcome.result = outcome.scene.run(operations);
  return outcome;
}

// What roxe.h says of every call; failed: an allocation did.
void expect_contract(const Outcome& after, const Scene& before, bool failed) {
  const Contract& contract = kContracts[before.call().operation];
  const int32_t status = after.result.status;
  expect(status >= 0 && status < 32 && (contract.results >> status & 1),
         "the result is one that the header knows");
  expect(after.scene.only_dst_differs(before), "nothing is written outside the pixels of dst");
  if ((contract.untouched_on_error && status != kRoxeOK) ||
      (contract.untouched_on_memory && failed))
    expect(after.scene.same_bytes(before), "dst is untouched");
}

// The outcome, which must be the same under every table of rows.
Outcome outcome_of_library(const Scene& before) {
  std::optional<Outcome> first;
  for (const roxe::RowKernels* rows : RunnableTables()) {
    const RowsInstead under(*rows);
    const AllocationWatch watch;
    const Outcome outcome = outcome_of(kLibrary, before);
    expect(watch.live_blocks() == 0, "every block is released");
    if (!first)
      first.emplace(outcome);
    else
      expect(outcome == *first, "every table of rows gives the same");
  }
  expect_contract(*first, before, false);
  return *first;
}

Operation any_operation(Input& input) { return static_cast<Operation>(input.below(kOperations)); }

}  // namespace

void call_once(Operation operation, const uint8_t* data, size_t size) {
  Input input(data, size);
  outcome_of_library(Scene(input, operation, 300));
}

void compare_with_reference(const uint8_t* data, size_t size) {
  Input input(data, size);
  const Operation operation = any_operation(input);
  const Scene before(input, operation, 40);
  expect(outcome_of_library(before) == outcome_of(kReference, before),
         "the reference gives the same");
}

void fail_allocation(const uint8_t* data, size_t size) {
  Input input(data, size);
  const Operation operation = any_operation(input);
  const int64_t fail_at = 1 + input.below(64);
  const Scene before(input, operation, 100);
  for (const roxe::RowKernels* rows : RunnableTables()) {
    const RowsInstead under(*rows);
    const AllocationWatch watch(fail_at);
    const Outcome outcome = outcome_of(kLibrary, before);
    expect(watch.live_blocks() == 0, "every block is released");
    expect_contract(outcome, before, watch.allocations() >= fail_at);
  }
}

}  // namespace fuzz
