// Whatever state the host's thread is in, the operations give the same bytes and leave it alone.
#include <fenv.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cmath>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

#include "checksums/checksum_table.h"
#include "support/image.h"
#include "support/seams.h"

namespace {

constexpr int kErrno = 123;

// Flushing of subnormal numbers: operands and results on x86-64, elsewhere left as it is.
#if defined(__x86_64__)
constexpr unsigned kFlushing = 0x8040;
unsigned flushing() { return _mm_getcsr() & kFlushing; }
void set_flushing() { _mm_setcsr(_mm_getcsr() | kFlushing); }
#else
constexpr unsigned kFlushing = 0;
unsigned flushing() { return 0; }
void set_flushing() {}
#endif

// What a host may have done to its thread.
struct HostState {
  int rounding = FE_TONEAREST;
  int flags = 0;
  bool traps = false, flushes = false;
};
HostState host;

// Puts the thread into the host's state, and at the end checks that it is still in it.
class InHostState {
 public:
  InHostState() {
    fegetenv(&before_);
    fesetenv(FE_DFL_ENV);
    fesetround(host.rounding);
    if (host.flushes) set_flushing();
    if (host.flags) feraiseexcept(host.flags);
    if (host.traps) feenableexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW | FE_UNDERFLOW);
    traps_ = fegetexcept();  // none where the processor has none
    errno = kErrno;
  }
  ~InHostState() {
    const int error = errno, rounding = fegetround(), traps = fegetexcept();
    const int flags = fetestexcept(FE_ALL_EXCEPT);
    const unsigned flushes = flushing();
    fesetenv(&before_);  // before anything else computes
    EXPECT_EQ(error, kErrno);
    EXPECT_EQ(rounding, host.rounding);
    EXPECT_EQ(traps, traps_);
    EXPECT_EQ(flags, host.flags);
    EXPECT_EQ(flushes, host.flushes ? kFlushing : 0u);
  }

 private:
  fenv_t before_;
  int traps_;
};

// Operation, called in the host's state.
template <auto operation>
struct Hosted;
template <class... Arguments, int32_t (*operation)(Arguments...)>
struct Hosted<operation> {
  static int32_t call(Arguments... arguments) {
    const InHostState state;
    return operation(arguments...);
  }
};

const Operations kHosted = {
    .rotate = Hosted<roxeRotateImage>::call,
    .straighten = Hosted<roxeuAutoStraightenImage>::call,
    .affine = Hosted<roxeAffineTransform>::call,
    .perspective = Hosted<roxePerspectiveDistortionCorrection>::call,
    .soft_focus = Hosted<roxeSoftFocus>::call,
    .replace_colour = Hosted<roxeReplaceColor>::call,
    .replace_colour_mask = Hosted<roxeReplaceColorMask>::call,
    .tint = Hosted<roxeColorTint>::call,
    .tint_mask = Hosted<roxeColorTintMask>::call,
    .temperature = Hosted<roxeColorTemperature>::call,
    .auto_gamma = Hosted<roxeAutoGamma>::call,
    .shadow_highlight = Hosted<roxeShadowHighlight>::call,
    .variations = Hosted<roxeVariations>::call,
    .correction_size = Hosted<roxeGetPerspectiveDistortionCorrectionSize>::call,
    .verify = Hosted<roxeVerifyPixelArray>::call,
};

std::string CommittedChecksums() {
  std::ifstream file(ROXE_SOURCE_DIR "/tests/checksums/checksums.txt");
  std::stringstream committed;
  committed << file.rdbuf();
  return committed.str();
}

// The names of the operations that give other bytes than the committed ones.
std::set<std::string> ChangedIn(const HostState& state) {
  host = state;
  std::istringstream expected(CommittedChecksums()), table(ChecksumTable(kHosted));
  host = HostState();
  std::string line, wanted;
  std::set<std::string> changed;
  while (std::getline(table, line)) {
    std::getline(expected, wanted);
    if (line == wanted) continue;
    const std::string name = line.substr(0, line.find_first_of("0123456789,-"));
    changed.insert(name);
  }
  if (std::getline(expected, wanted)) changed.insert("lines are missing");
  return changed;
}

const std::set<std::string> kNone;

TEST(HostState, RoundingChangesNothing) {
  EXPECT_EQ(ChangedIn({.rounding = FE_UPWARD}), kNone);
  EXPECT_EQ(ChangedIn({.rounding = FE_DOWNWARD}), kNone);
  EXPECT_EQ(ChangedIn({.rounding = FE_TOWARDZERO, .flags = FE_INEXACT}), kNone);
}

TEST(HostState, FlushingOfSubnormalNumbersChangesNothing) {
  EXPECT_EQ(ChangedIn({.flags = FE_DIVBYZERO, .flushes = true}), kNone);
}

TEST(HostState, UnmaskedExceptionsTrapNothing) { EXPECT_EQ(ChangedIn({.traps = true}), kNone); }

TEST(HostState, SizesAreTheSameInEveryRounding) {
  // Edges of (20000, 200) are 20001 less 0.000025 long, which is 20001 in single precision only if
  // it is rounded to nearest or up.
  for (const int rounding : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    Quad quad = {0, 0, 20000, 200, 20000, 300, 0, 100};
    int32_t width = 0, height = 0;
    host = {.rounding = rounding, .traps = true};
    EXPECT_EQ(
        Hosted<roxeGetPerspectiveDistortionCorrectionSize>::call(&quad, 0, 0, 0, &width, &height),
        1);
    host = HostState();
    EXPECT_EQ(width, 20001);
    EXPECT_EQ(height, 100);
  }
}

TEST(HostState, NumbersThatAreNoneLeaveNoTrace) {
  Image src(kRoxeFormatRGB24, 9, 9), dst(kRoxeFormatRGB24, 9, 9);
  const Image before = dst;
  host.traps = true;
  for (const float angle : {HUGE_VALF, -HUGE_VALF, NAN, 1e38f})
    Hosted<roxeRotateImage>::call(src, 0, 0, angle, dst, 0, 0);
  // Two opposite corners in one place of the destination: the mapping is singular.
  Quad quad = {0, 0, 8, 0, 8, 8, 0, 8};
  const Quad onto = {0, 0, 8, 0, 0, 0, 0, 8};
  EXPECT_EQ(Hosted<roxeAffineTransform>::call(src, dst, &quad, &onto, PixelRect{0, 0, 9, 9}),
            kRoxeOK);
  host = HostState();
}

// Memory that cannot be had sets errno.
TEST(HostState, ErrnoIsKeptWithoutMemory) {
  Image src(kRoxeFormatRGB24, 30, 30), dst(kRoxeFormatRGB24, 30, 30);
  const Image mask(kRoxeFormatGray8, 30, 30);
  for (int64_t fail_at = 1; fail_at <= 4; ++fail_at) {
    const auto watched = [&](const auto& operation) {
      const AllocationWatch watch(fail_at);
      const InHostState state;
      operation();
    };
    Quad quad = {0, 0, 29, 0, 29, 29, 0, 29};
    const PixelRect all = {0, 0, 30, 30};
    watched([&] { roxeAffineTransform(src, dst, &quad, nullptr, all); });
    watched([&] { roxePerspectiveDistortionCorrection(src, dst, &quad, 0, 0, all); });
    watched([&] { roxeSoftFocus(src, dst, mask, 5, 5); });
    watched([&] { roxeColorTemperature(src, dst, 20, 20); });
    watched([&] { roxeAutoGamma(src, dst, nullptr); });
    watched([&] { roxeShadowHighlight(src, dst, 20, 20, 20); });
    watched([&] { roxeVariations(src, dst, 1, 2, 3, 4, 5); });
  }
}

TEST(HostState, LocaleIsKept) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  ChecksumTable(kLibrary);
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}

}  // namespace
