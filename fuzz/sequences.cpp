#include <algorithm>
#include <vector>

#include "fuzz/targets.h"
#include "support/seams.h"

namespace fuzz {
namespace {

constexpr size_t kBlock = 20000;  // more than the largest picture

// A record of a verified format whose rows lie in the block.
PixelArray record_in_block(Input& input, size_t* offset) {
  PixelArray record = {};
  record.format = input.byte() % 4 == 0 ? kRoxeFormatGray8 : kRoxeFormatRGB24;
  const int32_t channels = record.format == kRoxeFormatGray8 ? 1 : 3;
  record.width = 1 + input.below(input.byte() % 4 == 0 ? 200 : 24);
  record.height = 1 + input.below(24);
  record.rowBytes = channels * record.width + (input.byte() % 2 == 0 ? 0 : input.below(9));
  // The regions of auto gamma may reach into the padding of the last row, too.
  const size_t taken = static_cast<size_t>(record.rowBytes) * static_cast<size_t>(record.height);
  *offset = static_cast<size_t>(input.below(65535)) % (kBlock - taken + 1);
  return record;
}

// Source, destination and mask of one call, their pixels somewhere in the block.
struct Step {
  PixelArray records[3];
  size_t offsets[3];
  Call call;
};

Step step_of(Input& input) {
  Step step = {};
  for (int i = 0; i < 3; ++i) {
    size_t& offset = step.offsets[i];
    step.records[i] = record_in_block(input, &offset);
    if (i == 0 || input.byte() % 4 != 0) continue;
    // The picture of the source, or one of its size elsewhere.
    step.records[i] = step.records[0];
    if (i == 2) step.records[i].format = kRoxeFormatGray8;
    if (input.byte() % 2 == 0) offset = step.offsets[0];
    offset = std::min(offset, kBlock - static_cast<size_t>(step.records[i].rowBytes) *
                                           static_cast<size_t>(step.records[i].height));
  }
  const Operation operation = static_cast<Operation>(input.below(kVariations + 1));
  step.call = call_of(input, operation, {step.records[0].width, step.records[0].height},
                      {step.records[1].width, step.records[1].height});
  return step;
}

struct Outcome {
  Result result;
  std::vector<uint8_t> block;

  bool operator==(const Outcome& other) const {
    return result == other.result && block == other.block;
  }
};

// What the operations give after each step.
std::vector<Outcome> outcomes(const Operations& operations, const std::vector<Step>& steps,
                              std::vector<uint8_t> block) {
  std::vector<Outcome> all;
  for (const Step& step : steps) {
    PixelArray records[3];
    for (int i = 0; i < 3; ++i) {
      records[i] = step.records[i];
      records[i].pixels = block.data() + step.offsets[i];
    }
    const Result result = run(operations, step.call, &records[0], &records[1], &records[2]);
    all.push_back({result, block});
  }
  return all;
}

}  // namespace

void play_sequence(const uint8_t* data, size_t size) {
  Input input(data, size);
  std::vector<uint8_t> block(kBlock);
  uint32_t noise = static_cast<uint32_t>(input.whole());
  for (uint8_t& byte : block) {
    noise = noise * 1664525u + 1013904223u;
    byte = static_cast<uint8_t>(noise >> 24);
  }
  std::vector<Step> steps;
  while (steps.size() < 6 && !input.empty()) steps.push_back(step_of(input));

  const std::vector<Outcome> expected = outcomes(kReference, steps, block);
  for (const roxe::RowKernels* rows : RunnableTables()) {
    const RowsInstead under(*rows);
    const AllocationWatch watch;
    const std::vector<Outcome> actual = outcomes(kLibrary, steps, block);
    expect(watch.live_blocks() == 0, "every block is released");
    expect(actual == expected, "the reference gives the same");
  }
}

}  // namespace fuzz
