// All fifteen operations at once from sixteen threads, on shared sources and own destinations. Every
// thread must get what one thread alone gets; under the thread sanitizer none may get in another's
// way. Exit code 1 and the names of what differs otherwise.
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "checksums/pictures.h"
#include "roxe.h"

namespace {

constexpr size_t kThreads = 16;
constexpr size_t kRounds = 3;  // every thread calls every operation so many times

struct Shared {
  Picture picture, mask;
  PixelArray src, keep;  // records of the two
};

Shared shared_sources() {
  Shared shared = {picture("", kRoxeFormatRGB24, 97, 61, 2,
                           [](int32_t x, int32_t y, int32_t c) {
                             return static_cast<uint8_t>(x * (c + 1) + y * y + (x / 9) * 40);
                           }),
                   picture("", kRoxeFormatGray8, 97, 61, 1,
                           [](int32_t x, int32_t y, int32_t) {
                             return static_cast<uint8_t>((x / 7 + y / 5) % 2 ? 255 : 3 * x);
                           }),
                   {},
                   {}};
  return shared;
}

// What a call leaves behind.
struct Outcome {
  int32_t status, width, height;
  std::vector<uint8_t> pixels;
  bool operator==(const Outcome&) const = default;
};

struct Call {
  const char* name;
  int32_t (*run)(const Shared& shared, PixelArray* dst, Outcome* sizes);
};

constexpr Quad kCorners = {5, 3, 90, 8, 95, 58, 1, 52};
constexpr PixelRect kArea = {0, 0, 97, 61};

constexpr Call kCalls[] = {
    {"roxeVerifyPixelArray",
     [](const Shared& s, PixelArray*, Outcome*) { return roxeVerifyPixelArray(&s.src); }},
    {"roxeRotateImage",
     [](const Shared& s, PixelArray* dst, Outcome*) {
       return roxeRotateImage(&s.src, 48, 30, 0.4f, dst, 48, 30);
     }},
    {"roxeuAutoStraightenImage",
     [](const Shared& s, PixelArray* dst, Outcome*) {
       return roxeuAutoStraightenImage(&s.src, 2, 9, 90, 3, dst);
     }},
    {"roxeAffineTransform",
     [](const Shared& s, PixelArray* dst, Outcome*) {
       Quad quad = kCorners;
       return roxeAffineTransform(&s.src, dst, &quad, nullptr, kArea);
     }},
    {"roxeGetPerspectiveDistortionCorrectionSize",
     [](const Shared&, PixelArray*, Outcome* sizes) {
       Quad quad = kCorners;
       return roxeGetPerspectiveDistortionCorrectionSize(&quad, 0, 0, 0, &sizes->width,
                                                         &sizes->height);
     }},
    {"roxePerspectiveDistortionCorrection",
     [](const Shared& s, PixelArray* dst, Outcome*) {
       Quad quad = kCorners;
       return roxePerspectiveDistortionCorrection(&s.src, dst, &quad, 0, 0, kArea);
     }},
    {"roxeSoftFocus", [](const Shared& s, PixelArray* dst,
                         Outcome*) { return roxeSoftFocus(&s.src, dst, &s.keep, 12, 7); }},
    {"roxeReplaceColor",
     [](const Shared& s, PixelArray* dst, Outcome*) {
       return roxeReplaceColor(&s.src, dst, 60, 90, 180, 150, 77, -20, 30);
     }},
    {"roxeReplaceColorMask",
     [](const Shared& s, PixelArray* dst, Outcome*) {
       return roxeReplaceColorMask(&s.src, dst, 60, 90, 180, 150);
     }},
    {"roxeColorTint", [](const Shared& s, PixelArray* dst,
                         Outcome*) { return roxeColorTint(&s.src, dst, 60, 90, 180, 120); }},
    {"roxeColorTintMask",
     [](const Shared& s, PixelArray* dst, Outcome*) {
       return roxeColorTintMask(&s.src, dst, 60, 90, 180, 120);
     }},
    {"roxeColorTemperature", [](const Shared& s, PixelArray* dst,
                                Outcome*) { return roxeColorTemperature(&s.src, dst, 40, -15); }},
    {"roxeAutoGamma", [](const Shared& s, PixelArray* dst,
                         Outcome*) { return roxeAutoGamma(&s.src, dst, nullptr); }},
    {"roxeShadowHighlight", [](const Shared& s, PixelArray* dst,
                               Outcome*) { return roxeShadowHighlight(&s.src, dst, 40, 25, -10); }},
    {"roxeVariations", [](const Shared& s, PixelArray* dst,
                          Outcome*) { return roxeVariations(&s.src, dst, 4, -2, 1, 2, 3); }},
};
constexpr size_t kOperations = std::size(kCalls);
static_assert(kOperations == 15);

Outcome outcome_of(const Call& call, const Shared& shared) {
  Picture target = picture("", kRoxeFormatRGB24, 97, 61, 5, [](int32_t x, int32_t y, int32_t) {
    return static_cast<uint8_t>(x ^ y);
  });
  PixelArray dst = record_of(target);
  Outcome outcome = {};
  outcome.status = call.run(shared, &dst, &outcome);
  outcome.pixels = target.bytes;
  return outcome;
}

}  // namespace

int main() {
  Shared shared = shared_sources();
  shared.src = record_of(shared.picture);
  shared.keep = record_of(shared.mask);
  const Shared before = shared;

  std::vector<Outcome> alone;
  for (const Call& call : kCalls) alone.push_back(outcome_of(call, shared));

  std::atomic<size_t> ready = 0;
  std::array<std::array<bool, kOperations>, kThreads> differs = {};
  std::vector<std::thread> threads;
  for (size_t thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([&, thread] {
      ++ready;
      while (ready != kThreads) std::this_thread::yield();  // all begin together
      for (size_t i = 0; i < kRounds * kOperations; ++i) {
        // Half of them call the same operation at a time, the others each another one.
        const size_t k = (i + (thread % 2 ? thread : 0)) % kOperations;
        if (outcome_of(kCalls[k], shared) != alone[k]) differs[thread][k] = true;
      }
    });
  for (std::thread& thread : threads) thread.join();

  int failures =
      shared.picture.bytes != before.picture.bytes || shared.mask.bytes != before.mask.bytes;
  if (failures) std::puts("a source was written to");
  for (size_t thread = 0; thread < kThreads; ++thread)
    for (size_t k = 0; k < kOperations; ++k)
      if (differs[thread][k]) {
        std::printf("%s: other bytes in thread %zu\n", kCalls[k].name, thread);
        failures = 1;
      }
  return failures;
}
