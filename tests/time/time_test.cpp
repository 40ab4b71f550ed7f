// Time, FrameRate and their constants.
#include "tovfoundation/time.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

namespace {

using TOV::FrameRate;
using TOV::Time;
namespace FR = TOV::FrameRates;

constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();

TEST(Time, OneSecondIsTheTimeBase) {
  EXPECT_EQ(Time(1.0).GetTicks(), 254016000000);
  EXPECT_EQ(Time(0.0).GetTicks(), 0);
  EXPECT_EQ(Time().GetTicks(), 0);
}

TEST(Time, HeaderExampleAddsTwoSecondsOfFilm) {
  const Time start(1.5);
  EXPECT_EQ(start.GetTicks(), 381024000000);
  const Time end = start + Time(48, FR::kFrameRate_Film24);
  EXPECT_EQ(end.ToFrame64(FR::kFrameRate_Film24), 84);
}

TEST(Time, TimeConstantsHaveTheirTickValuesAndOrder) {
  EXPECT_EQ(TOV::kTime_Zero.GetTicks(), 0);
  EXPECT_EQ(TOV::kTime_Max.GetTicks(), 91445760000000000);
  EXPECT_EQ(TOV::kTime_Min.GetTicks(), -91445760000000000);
  EXPECT_EQ(TOV::kTime_Invalid.GetTicks(), -101606400000000000);
  EXPECT_LT(TOV::kTime_Invalid, TOV::kTime_Min);
  EXPECT_LT(TOV::kTime_Min, TOV::kTime_Zero);
  EXPECT_LT(TOV::kTime_Zero, TOV::kTime_Max);
}

TEST(FrameRate, ConstantsHaveExactTicksPerFrame) {
  struct Row {
    const char* name;
    FrameRate rate;
    std::int64_t ticks;
  };
  const Row rows[] = {
      {"Zero", FR::kFrameRate_Zero, kMax64},
      {"Video15", FR::kFrameRate_Video15, 16934400000},
      {"23976", FR::kFrameRate_23976, 10594584000},
      {"Film24", FR::kFrameRate_Film24, 10584000000},
      {"VideoPAL", FR::kFrameRate_VideoPAL, 10160640000},
      {"VideoNTSC", FR::kFrameRate_VideoNTSC, 8475667200},
      {"Video30", FR::kFrameRate_Video30, 8467200000},
      {"VideoPAL_HD", FR::kFrameRate_VideoPAL_HD, 5080320000},
      {"VideoNTSC_HD", FR::kFrameRate_VideoNTSC_HD, 4237833600},
      {"Video60", FR::kFrameRate_Video60, 4233600000},
      {"Video100", FR::kFrameRate_Video100, 2540160000},
      {"Audio22050", FR::kFrameRate_Audio22050, 11520000},
      {"Audio32000", FR::kFrameRate_Audio32000, 7938000},
      {"Audio44100", FR::kFrameRate_Audio44100, 5760000},
      {"Audio48000", FR::kFrameRate_Audio48000, 5292000},
      {"Audio88200", FR::kFrameRate_Audio88200, 2880000},
      {"Audio96000", FR::kFrameRate_Audio96000, 2646000},
      {"Audio192000", FR::kFrameRate_Audio192000, 1323000},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.rate.GetTicksPerFrame(), row.ticks);
  }
}

TEST(FrameRate, Rate2997IsNotNtsc) {
  EXPECT_EQ(FrameRate(29.97).GetTicksPerFrame(), 8475675675);
  EXPECT_NE(FrameRate(29.97), FR::kFrameRate_VideoNTSC);
  EXPECT_EQ(FrameRate(30000.0 / 1001.0).GetTicksPerFrame(), 8475667200);
}

TEST(FrameRate, ZeroDefaultAndSentinelAreEqualAndCountNoFrames) {
  const FrameRate fromZero(0.0);
  const FrameRate byDefault;
  EXPECT_EQ(fromZero, byDefault);
  EXPECT_EQ(fromZero, FR::kFrameRate_Zero);
  EXPECT_EQ(fromZero.GetValue(), 0.0);
  EXPECT_EQ(byDefault.GetValue(), 0.0);
  EXPECT_EQ(FR::kFrameRate_Zero.GetValue(), 0.0);
  for (const Time t : {Time(1.0), Time(-3.0), Time::TicksToTime(kMax64), Time::TicksToTime(1)}) {
    EXPECT_EQ(t.ToFrame64(fromZero), 0);
    EXPECT_EQ(t.ToFrame64(byDefault), 0);
    EXPECT_EQ(t.ToFrame32(FR::kFrameRate_Zero), 0);
  }
}

TEST(FrameRate, ComparisonsOrderRatesNotTicks) {
  EXPECT_LT(FR::kFrameRate_Film24, FR::kFrameRate_VideoPAL);
  EXPECT_GT(FR::kFrameRate_Film24.GetTicksPerFrame(), FR::kFrameRate_VideoPAL.GetTicksPerFrame());
  EXPECT_TRUE(FR::kFrameRate_VideoPAL > FR::kFrameRate_Film24);
  EXPECT_TRUE(FR::kFrameRate_Film24 <= FR::kFrameRate_Film24);
  EXPECT_TRUE(FR::kFrameRate_Film24 >= FR::kFrameRate_Film24);
  EXPECT_FALSE(FR::kFrameRate_Film24 >= FR::kFrameRate_VideoPAL);
  EXPECT_TRUE(FR::kFrameRate_Zero < FR::kFrameRate_Video15);
  EXPECT_TRUE(FR::kFrameRate_Film24 != FR::kFrameRate_VideoPAL);
}

TEST(FrameRate, ValueCreateAndNegativeRates) {
  EXPECT_EQ(FR::kFrameRate_Film24.GetValue(), 24.0);
  EXPECT_EQ(FrameRate::Create(254016000).GetValue(), 1000.0);
  EXPECT_EQ(FrameRate::Create(-5).GetTicksPerFrame(), -5);
  EXPECT_EQ(FrameRate(-25.0).GetTicksPerFrame(), -10160640000);
}

TEST(Time, FrameNumbersTruncateTowardZero) {
  EXPECT_EQ(Time::TicksToTime(-1).ToFrame64(FR::kFrameRate_Film24), 0);
  EXPECT_EQ(Time::TicksToTime(-10584000000 - 1).ToFrame64(FR::kFrameRate_Film24), -1);
  EXPECT_EQ(Time::TicksToTime(-10584000000).ToFrame64(FR::kFrameRate_Film24), -1);
  EXPECT_EQ(Time::TicksToTime(10584000000 - 1).ToFrame64(FR::kFrameRate_Film24), 0);
}

TEST(Time, ToFrame32KeepsTheLowBitsWithoutSaturation) {
  const Time t = Time::TicksToTime((std::int64_t{1} << 32) + 7);
  EXPECT_EQ(t.ToFrame64(FrameRate::Create(1)), (std::int64_t{1} << 32) + 7);
  EXPECT_EQ(t.ToFrame32(FrameRate::Create(1)), 7);
  EXPECT_EQ(Time::TicksToTime(0x80000000LL).ToFrame32(FrameRate::Create(1)), kMin64 >> 32);
}

TEST(Time, AlignToFrameMovesTowardZero) {
  const FrameRate rate = FR::kFrameRate_Film24;
  Time minusOneAndHalf = Time::TicksToTime(-10584000000 - 5292000000);
  minusOneAndHalf.AlignToFrame(rate);
  EXPECT_EQ(minusOneAndHalf.GetTicks(), -10584000000);
  Time plus = Time::TicksToTime(2 * 10584000000 + 17);
  plus.AlignToFrame(rate);
  EXPECT_EQ(plus.GetTicks(), 2 * 10584000000);
  Time anything(12345.0);
  anything.AlignToFrame(FR::kFrameRate_Zero);
  EXPECT_EQ(anything.GetTicks(), 0);
}

TEST(Time, AbsChangesTheTimeItself) {
  Time t(-2.0);
  Time& result = t.Abs();
  EXPECT_EQ(&result, &t);
  EXPECT_EQ(t.GetTicks(), 2 * 254016000000);
  Time lowest = Time::TicksToTime(kMin64);
  EXPECT_EQ(lowest.Abs().GetTicks(), kMin64);
}

TEST(Time, StreamsSecondsAsADouble) {
  std::ostringstream out;
  out << Time(1.5);
  EXPECT_EQ(out.str(), "1.5");
  std::ostringstream more;
  more << Time(-0.25) << '|' << Time();
  EXPECT_EQ(more.str(), "-0.25|0");
}

TEST(Time, ArithmeticWrapsInsteadOfOverflowing) {
  const Time top = Time::TicksToTime(kMax64);
  EXPECT_EQ((top + Time::TicksToTime(1)).GetTicks(), kMin64);
  EXPECT_EQ((Time::TicksToTime(kMin64) - Time::TicksToTime(1)).GetTicks(), kMax64);
  EXPECT_EQ((-Time::TicksToTime(kMin64)).GetTicks(), kMin64);
  EXPECT_EQ((top * 2).GetTicks(), -2);
  Time t = top;
  t += Time::TicksToTime(2);
  EXPECT_EQ(t.GetTicks(), kMin64 + 1);
  t -= Time::TicksToTime(3);
  EXPECT_EQ(t.GetTicks(), kMax64 - 1);
  EXPECT_EQ(Time(1, FrameRate()).GetTicks(), kMax64);
  EXPECT_EQ(Time(2, FrameRate()).GetTicks(), -2);
}

TEST(Time, IntegerFactorsOfEveryType) {
  const Time t = Time::TicksToTime(-10);
  EXPECT_EQ((t * 3).GetTicks(), -30);
  EXPECT_EQ((t * 3u).GetTicks(), -30);
  EXPECT_EQ((t * 3L).GetTicks(), -30);
  EXPECT_EQ((t * 3UL).GetTicks(), -30);
  EXPECT_EQ((t * 3LL).GetTicks(), -30);
  EXPECT_EQ((t * 3ULL).GetTicks(), -30);
  EXPECT_EQ((t * static_cast<short>(3)).GetTicks(), -30);
  // Unsigned 32-bit factors are zero-extended, signed ones sign-extended.
  EXPECT_EQ((Time::TicksToTime(1) * 0xFFFFFFFFu).GetTicks(), 0xFFFFFFFFLL);
  EXPECT_EQ((Time::TicksToTime(1) * std::int32_t{-1}).GetTicks(), -1);
  Time u = Time::TicksToTime(7);
  u *= 6u;
  EXPECT_EQ(u.GetTicks(), 42);
  u *= -1L;
  EXPECT_EQ(u.GetTicks(), -42);
}

TEST(Time, IntegerDivisionIsSignedAndTruncates) {
  const Time t = Time::TicksToTime(-10);
  EXPECT_EQ((t / 3u).GetTicks(), -3);
  EXPECT_EQ((t / 3).GetTicks(), -3);
  EXPECT_EQ((t / 3L).GetTicks(), -3);
  EXPECT_EQ((t / 3UL).GetTicks(), -3);
  EXPECT_EQ((t / -3).GetTicks(), 3);
  EXPECT_EQ((Time::TicksToTime(-10) / 0xFFFFFFFFu).GetTicks(), 0);
  Time u = Time::TicksToTime(100);
  u /= 7u;
  EXPECT_EQ(u.GetTicks(), 14);
  u /= -2LL;
  EXPECT_EQ(u.GetTicks(), -7);
}

TEST(Time, DoubleFactorsTruncateTowardZero) {
  EXPECT_EQ((Time::TicksToTime(10) * 0.35).GetTicks(), 3);
  EXPECT_EQ((Time::TicksToTime(-10) * 0.35).GetTicks(), -3);
  EXPECT_EQ((Time::TicksToTime(10) / 4.0).GetTicks(), 2);
  EXPECT_EQ((Time::TicksToTime(-10) / 4.0).GetTicks(), -2);
  Time t = Time::TicksToTime(9);
  t *= 0.5;
  EXPECT_EQ(t.GetTicks(), 4);
  t /= 0.3;
  EXPECT_EQ(t.GetTicks(), 13);
  EXPECT_DOUBLE_EQ(Time(3.0) / Time(2.0), 1.5);
}

TEST(Time, OutOfRangeAndNaNDoublesHaveDefinedTicks) {
  EXPECT_EQ(Time(1e300).GetTicks(), kMax64);
  EXPECT_EQ(Time(-1e300).GetTicks(), kMin64);
  EXPECT_EQ(Time(std::nan("")).GetTicks(), 0);
  EXPECT_EQ((Time(1.0) * std::numeric_limits<double>::infinity()).GetTicks(), kMax64);
  EXPECT_EQ((Time(1.0) / 0.0).GetTicks(), kMax64);
  EXPECT_EQ((Time(-1.0) / 0.0).GetTicks(), kMin64);
  EXPECT_EQ(FrameRate(1e-300).GetTicksPerFrame(), kMax64);
  EXPECT_EQ(FrameRate(std::nan("")).GetTicksPerFrame(), 0);
}

TEST(Time, AddFramesAndCalculateFrameRate) {
  Time t(1.0);
  t.AddFrames(-24, FR::kFrameRate_Film24);
  EXPECT_EQ(t.GetTicks(), 0);
  t.AddFrames(3, FR::kFrameRate_VideoPAL);
  EXPECT_EQ(t.GetTicks(), 3 * 10160640000);

  FrameRate rate = FR::kFrameRate_Film24;
  Time(1.0).CalculateFrameRate(25, rate);
  EXPECT_EQ(rate, FR::kFrameRate_VideoPAL);
  Time().CalculateFrameRate(25, rate);
  EXPECT_EQ(rate, FR::kFrameRate_Zero);
  Time(-1.0).CalculateFrameRate(25, rate);
  EXPECT_EQ(rate.GetTicksPerFrame(), -10160640000);
}

TEST(Time, ComparisonsAreSignedOnTicks) {
  EXPECT_TRUE(Time(-1.0) < Time(1.0));
  EXPECT_TRUE(Time(1.0) <= Time(1.0));
  EXPECT_TRUE(Time(2.0) > Time(1.0));
  EXPECT_TRUE(Time(2.0) >= Time(2.0));
  EXPECT_TRUE(Time(2.0) == Time::TicksToTime(508032000000));
  EXPECT_TRUE(Time(2.0) != Time(2.5));
}

static_assert(TOV::kTime_Max.GetTicks() == 91445760000000000);
static_assert(FR::kFrameRate_23976.GetTicksPerFrame() == 10594584000);
static_assert(sizeof(Time) == 8 && sizeof(FrameRate) == 8);
static_assert(std::is_trivially_copyable_v<Time> && std::is_trivially_copyable_v<FrameRate>);

}  // namespace
