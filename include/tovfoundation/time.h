// tovfoundation time subsystem: tick-based time, frame rates, timecode text and
// the legacy time records of the plug-in interfaces.
//
// Every media time in the library is a TOV::Time, a signed 64-bit count of
// ticks of 1/254016000000 second. The time base is chosen so that every common
// video rate (the 1000/1001 rates included) and every common audio rate is a
// whole number of ticks per frame or sample, so frame arithmetic is exact
// integer arithmetic. TOV::FrameRate is the same kind of count: ticks per frame.
//
//   using namespace TOV;
//   Time start(1.5);                                  // 1.5 s = 381024000000 ticks
//   Time end = start + Time(48, FrameRates::kFrameRate_Film24);   // + 2 s
//   end.ToFrame64(FrameRates::kFrameRate_Film24);     // 84
//   Timecode tc(end, FrameRates::kFrameRate_VideoNTSC, kTimecodeFormat_2997DropFrame);
//   tc.GetString();                                   // u"00;00;03;15"
//   Timecode::StringToTime(u"00;01;00;02"_u16, FrameRates::kFrameRate_VideoNTSC,
//                          kTimecodeFormat_2997DropFrame, false);   // frame 1800
//
// Rounding: every conversion from a double to ticks truncates toward zero, and
// every conversion from ticks to frames is signed integer division truncating
// toward zero (-1 tick is frame 0, not frame -1). Nothing rounds to nearest,
// checks for overflow or saturates, except where a comment below says so.
//
// Thread safety: Time and FrameRate are plain values. A Timecode is not shared
// between threads. The trace sink (SetTimecodeTraceSink) may be installed from
// any thread.
#pragma once

#include <concepts>
#include <cstdint>
#include <iosfwd>
#include <limits>
#include <type_traits>

#include "tovfoundation/common.h"

namespace tovimpl::time {

// Ticks per second of the library's time base, as an integer and as a double.
inline constexpr std::int64_t kTicksPerSecond = 254016000000;
inline constexpr double kTicksPerSecondDouble = 254016000000.0;

// The double ⇒ 64-bit integer conversion used everywhere in this header:
// truncation toward zero. A value outside the signed 64-bit range saturates
// (above ⇒ INT64_MAX, below ⇒ INT64_MIN, infinities likewise) and NaN gives 0.
// The plain C++ conversion would be undefined for those inputs.
constexpr std::int64_t TruncateToInt64(double value) noexcept {
  if (!(value == value)) return 0;
  if (value >= 9223372036854775808.0) return std::numeric_limits<std::int64_t>::max();
  if (value < -9223372036854775808.0) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

// Integer types accepted as factors and divisors of a Time (bool excluded).
template <typename I>
concept TimeInteger = std::integral<I> && !std::same_as<std::remove_cv_t<I>, bool>;

// A factor or divisor widened to 64 bits: signed types are sign-extended,
// unsigned ones zero-extended. A 64-bit unsigned value above INT64_MAX keeps
// its bits (it reads as a negative number in a division).
template <TimeInteger I>
constexpr std::int64_t WidenInteger(I value) noexcept {
  if constexpr (std::is_signed_v<I>) {
    return static_cast<std::int64_t>(value);
  } else {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(value));
  }
}

// Wrapping 64-bit arithmetic (two's complement), never undefined behaviour.
constexpr std::int64_t WrapAdd(std::int64_t a, std::int64_t b) noexcept {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}
constexpr std::int64_t WrapSub(std::int64_t a, std::int64_t b) noexcept {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
}
constexpr std::int64_t WrapMul(std::int64_t a, std::int64_t b) noexcept {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b));
}

}  // namespace tovimpl::time

namespace TOV {

// ---------------------------------------------------------------------------
// FrameRate
// ---------------------------------------------------------------------------

// A frame or sample rate, stored as ticks per frame: a larger count is a
// slower rate. 9223372036854775807 (INT64_MAX) is the no-rate sentinel, made by
// the default constructor and by FrameRate(0.0); it equals
// FrameRates::kFrameRate_Zero.
//
// Comparisons compare rates, not tick counts: kFrameRate_Film24 <
// kFrameRate_VideoPAL (24 fps is slower) although its tick count is larger;
// the sentinel is the slowest rate of all. == and != compare tick counts.
//
// Caller contract: a rate made by Create(0) must not be used for division
// (Time::ToFrame64, ToFrame32, AlignToFrame): that divides by zero.
class FrameRate {
 public:
  // The no-rate sentinel.
  constexpr FrameRate() noexcept : mTicksPerFrame(std::numeric_limits<std::int64_t>::max()) {}

  // From frames per second: 0.0 ⇒ the sentinel; otherwise 254016000000.0 /
  // framesPerSecond truncated toward zero. Negative rates are accepted and give
  // a negative tick count. FrameRate(29.97) has 8475675675 ticks, which is not
  // kFrameRate_VideoNTSC (30000.0 / 1001.0 gives 8475667200). A tiny rate
  // whose tick count would not fit saturates (see tovimpl::time::TruncateToInt64).
  constexpr explicit FrameRate(double framesPerSecond) noexcept
      : mTicksPerFrame(framesPerSecond == 0.0
                           ? std::numeric_limits<std::int64_t>::max()
                           : tovimpl::time::TruncateToInt64(tovimpl::time::kTicksPerSecondDouble /
                                                            framesPerSecond)) {}

  // A rate with exactly this many ticks per frame, unchecked.
  static constexpr FrameRate Create(std::int64_t ticksPerFrame) noexcept {
    FrameRate rate;
    rate.mTicksPerFrame = ticksPerFrame;
    return rate;
  }

  // Ticks per frame (the sentinel rate holds INT64_MAX).
  constexpr std::int64_t GetTicksPerFrame() const noexcept { return mTicksPerFrame; }

  // Frames per second: 0.0 for the sentinel, otherwise 254016000000.0 divided
  // by the tick count (Create(0) ⇒ +infinity).
  constexpr double GetValue() const noexcept {
    if (mTicksPerFrame == std::numeric_limits<std::int64_t>::max()) return 0.0;
    return tovimpl::time::kTicksPerSecondDouble / static_cast<double>(mTicksPerFrame);
  }

  // Equal when the tick counts per frame are equal.
  constexpr bool operator==(const FrameRate& other) const noexcept = default;
  // Rate order: a < b when a has more ticks per frame (a is slower).
  constexpr bool operator<(const FrameRate& other) const noexcept {
    return mTicksPerFrame > other.mTicksPerFrame;
  }
  // Rate order, as operator<.
  constexpr bool operator<=(const FrameRate& other) const noexcept {
    return mTicksPerFrame >= other.mTicksPerFrame;
  }
  // Rate order: a > b when a has fewer ticks per frame (a is faster).
  constexpr bool operator>(const FrameRate& other) const noexcept {
    return mTicksPerFrame < other.mTicksPerFrame;
  }
  // Rate order, as operator>.
  constexpr bool operator>=(const FrameRate& other) const noexcept {
    return mTicksPerFrame <= other.mTicksPerFrame;
  }

 private:
  std::int64_t mTicksPerFrame;
};

// ---------------------------------------------------------------------------
// Time
// ---------------------------------------------------------------------------

// A point or span of media time in ticks (254016000000 per second), positive
// or negative. All arithmetic wraps in 64 bits (computed in unsigned
// arithmetic, so it is never undefined behaviour); nothing saturates.
//
// Caller contracts (undefined for the caller, as for built-in integers):
//   - dividing by an integer 0, or by a FrameRate made by Create(0);
//   - dividing a time of INT64_MIN ticks by -1 (also by a 64-bit unsigned
//     UINT64_MAX, which reads as -1, and ToFrame64 with Create(-1));
//   - CalculateFrameRate with a frame count of 0 on a non-zero time.
// Conversions from double never are undefined: an out-of-range result
// saturates to INT64_MAX / INT64_MIN and NaN gives 0 ticks.
class Time {
 public:
  // Zero ticks.
  constexpr Time() noexcept : mTicks(0) {}

  // From seconds: 0.0 ⇒ zero; otherwise 254016000000.0 × seconds truncated
  // toward zero. Time(1.0).GetTicks() == 254016000000.
  constexpr explicit Time(double seconds) noexcept
      : mTicks(seconds == 0.0 ? 0
                              : tovimpl::time::TruncateToInt64(
                                    tovimpl::time::kTicksPerSecondDouble * seconds)) {}

  // frames × rate.GetTicksPerFrame(), wrapping; the sentinel rate is not
  // special-cased (Time(1, FrameRate()) is INT64_MAX ticks).
  constexpr Time(std::int64_t frames, FrameRate rate) noexcept
      : mTicks(tovimpl::time::WrapMul(frames, rate.GetTicksPerFrame())) {}

  // A time of exactly `ticks` ticks.
  static constexpr Time TicksToTime(std::int64_t ticks) noexcept { return Time(TickTag{}, ticks); }

  // The tick count (254016000000 per second).
  constexpr std::int64_t GetTicks() const noexcept { return mTicks; }

  // -- Wrapping arithmetic on ticks.
  constexpr Time operator+(const Time& other) const noexcept {
    return TicksToTime(tovimpl::time::WrapAdd(mTicks, other.mTicks));
  }
  // The difference, wrapping.
  constexpr Time operator-(const Time& other) const noexcept {
    return TicksToTime(tovimpl::time::WrapSub(mTicks, other.mTicks));
  }
  // The negation, wrapping (INT64_MIN stays INT64_MIN).
  constexpr Time operator-() const noexcept {
    return TicksToTime(tovimpl::time::WrapSub(0, mTicks));
  }
  // Adds in place, wrapping.
  constexpr Time& operator+=(const Time& other) noexcept {
    mTicks = tovimpl::time::WrapAdd(mTicks, other.mTicks);
    return *this;
  }
  // Subtracts in place, wrapping.
  constexpr Time& operator-=(const Time& other) noexcept {
    mTicks = tovimpl::time::WrapSub(mTicks, other.mTicks);
    return *this;
  }

  // -- Integer factors and divisors of any integer type (int, unsigned, long,
  // unsigned long, long long, ...). Signed factors are sign-extended, unsigned
  // ones zero-extended; the product wraps. Division is signed 64-bit division
  // truncating toward zero, also for unsigned divisors:
  //   Time::TicksToTime(-10) / 3u ⇒ -3 ticks.
  template <tovimpl::time::TimeInteger I>
  constexpr Time operator*(I factor) const noexcept {
    return TicksToTime(tovimpl::time::WrapMul(mTicks, tovimpl::time::WidenInteger(factor)));
  }
  template <tovimpl::time::TimeInteger I>
  // Multiplies in place, as operator*.
  constexpr Time& operator*=(I factor) noexcept {
    mTicks = tovimpl::time::WrapMul(mTicks, tovimpl::time::WidenInteger(factor));
    return *this;
  }
  template <tovimpl::time::TimeInteger I>
  // Signed 64-bit division truncating toward zero.
  constexpr Time operator/(I divisor) const noexcept {
    return TicksToTime(mTicks / tovimpl::time::WidenInteger(divisor));
  }
  template <tovimpl::time::TimeInteger I>
  // Divides in place, as operator/.
  constexpr Time& operator/=(I divisor) noexcept {
    mTicks /= tovimpl::time::WidenInteger(divisor);
    return *this;
  }

  // -- Double factors and divisors: ticks as a double, multiplied or divided,
  // truncated toward zero (out of range saturates, NaN gives 0).
  constexpr Time operator*(double factor) const noexcept {
    return TicksToTime(tovimpl::time::TruncateToInt64(static_cast<double>(mTicks) * factor));
  }
  // Multiplies in place, as operator*(double).
  constexpr Time& operator*=(double factor) noexcept {
    mTicks = tovimpl::time::TruncateToInt64(static_cast<double>(mTicks) * factor);
    return *this;
  }
  // Ticks divided by `divisor`, truncated toward zero.
  constexpr Time operator/(double divisor) const noexcept {
    return TicksToTime(tovimpl::time::TruncateToInt64(static_cast<double>(mTicks) / divisor));
  }
  // Divides in place, as operator/(double).
  constexpr Time& operator/=(double divisor) noexcept {
    mTicks = tovimpl::time::TruncateToInt64(static_cast<double>(mTicks) / divisor);
    return *this;
  }

  // The ratio of the two tick counts as doubles.
  constexpr double operator/(const Time& other) const noexcept {
    return static_cast<double>(mTicks) / static_cast<double>(other.mTicks);
  }

  // Signed comparison of tick counts.
  constexpr auto operator<=>(const Time& other) const noexcept = default;
  // Equal tick counts.
  constexpr bool operator==(const Time& other) const noexcept = default;

  // Negates the time in place when it is negative and returns *this. This is a
  // modifying operation by design, not a function returning a copy.
  // INT64_MIN ticks stay INT64_MIN (wrapping).
  constexpr Time& Abs() noexcept {
    if (mTicks < 0) mTicks = tovimpl::time::WrapSub(0, mTicks);
    return *this;
  }

  // Adds frames × ticks per frame (wrapping).
  constexpr void AddFrames(std::int64_t frames, FrameRate rate) noexcept {
    mTicks =
        tovimpl::time::WrapAdd(mTicks, tovimpl::time::WrapMul(frames, rate.GetTicksPerFrame()));
  }

  // Replaces the ticks by (ticks / ticksPerFrame) × ticksPerFrame, truncating
  // toward zero: a positive time moves down to its frame boundary, a negative
  // one up toward zero (-1.5 frames ⇒ -1 frame). With the sentinel rate every
  // ordinary time aligns to 0.
  constexpr void AlignToFrame(FrameRate rate) noexcept {
    const std::int64_t ticksPerFrame = rate.GetTicksPerFrame();
    mTicks = tovimpl::time::WrapMul(mTicks / ticksPerFrame, ticksPerFrame);
  }

  // Treats the time as the duration of `frames` frames and stores the rate
  // with ticks / frames ticks per frame in `rate` (signed division; the count
  // is taken as signed). A time of 0 ticks gives the sentinel.
  constexpr void CalculateFrameRate(std::uint64_t frames, FrameRate& rate) const noexcept {
    if (mTicks == 0) {
      rate = FrameRate();
      return;
    }
    rate = FrameRate::Create(mTicks / static_cast<std::int64_t>(frames));
  }

  // Frame number at `rate`: 0 for the sentinel, otherwise ticks /
  // ticksPerFrame truncated toward zero. ToFrame32 returns the low 32 bits of
  // the same quotient, without saturation.
  constexpr std::int64_t ToFrame64(FrameRate rate) const noexcept {
    if (rate == FrameRate()) return 0;
    return mTicks / rate.GetTicksPerFrame();
  }
  // ToFrame64 truncated to 32 bits (the low 32 bits, as a signed value).
  constexpr std::int32_t ToFrame32(FrameRate rate) const noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(ToFrame64(rate)));
  }

 private:
  struct TickTag {};
  constexpr Time(TickTag, std::int64_t ticks) noexcept : mTicks(ticks) {}

  std::int64_t mTicks;
};

// Writes the time in seconds (ticks / 254016000000.0 as a double) with the
// stream's own formatting and nothing else: Time(1.5) prints "1.5".
TOV_API std::ostream& operator<<(std::ostream& stream, const Time& time);

// -- Time constants.
inline constexpr Time kTime_Zero{};
// 360000 seconds (100 hours): 91445760000000000 ticks.
inline constexpr Time kTime_Max = Time::TicksToTime(
    tovimpl::time::TruncateToInt64(tovimpl::time::kTicksPerSecondDouble * 360000.0));
// -kTime_Max.
inline constexpr Time kTime_Min = -kTime_Max;
// -400000 seconds: below kTime_Min, so it is never a valid time and compares
// less than every valid time. The timecode parsers return it for rejected text.
inline constexpr Time kTime_Invalid = Time::TicksToTime(
    tovimpl::time::TruncateToInt64(tovimpl::time::kTicksPerSecondDouble * -400000.0));

// -- Frame-rate constants, each built from its rate in frames per second.
namespace FrameRates {
inline constexpr FrameRate kFrameRate_Zero{};                          // sentinel
inline constexpr FrameRate kFrameRate_Video15{15.0};                   // 16934400000
inline constexpr FrameRate kFrameRate_23976{24000.0 / 1001.0};         // 10594584000
inline constexpr FrameRate kFrameRate_Film24{24.0};                    // 10584000000
inline constexpr FrameRate kFrameRate_VideoPAL{25.0};                  // 10160640000
inline constexpr FrameRate kFrameRate_VideoNTSC{30000.0 / 1001.0};     // 8475667200
inline constexpr FrameRate kFrameRate_Video30{30.0};                   // 8467200000
inline constexpr FrameRate kFrameRate_VideoPAL_HD{50.0};               // 5080320000
inline constexpr FrameRate kFrameRate_VideoNTSC_HD{60000.0 / 1001.0};  // 4237833600
inline constexpr FrameRate kFrameRate_Video60{60.0};                   // 4233600000
inline constexpr FrameRate kFrameRate_Video100{100.0};                 // 2540160000
inline constexpr FrameRate kFrameRate_Audio22050{22050.0};             // 11520000
inline constexpr FrameRate kFrameRate_Audio32000{32000.0};             // 7938000
inline constexpr FrameRate kFrameRate_Audio44100{44100.0};             // 5760000
inline constexpr FrameRate kFrameRate_Audio48000{48000.0};             // 5292000
inline constexpr FrameRate kFrameRate_Audio88200{88200.0};             // 2880000
inline constexpr FrameRate kFrameRate_Audio96000{96000.0};             // 2646000
inline constexpr FrameRate kFrameRate_Audio192000{192000.0};           // 1323000
}  // namespace FrameRates

// ---------------------------------------------------------------------------
// Timecode
// ---------------------------------------------------------------------------

// Timecode format codes and the rate each one imposes ("own" is the rate the
// caller gives the Timecode). Any other code uses the sentinel FrameRate().
inline constexpr std::uint32_t kTimecodeFormat_24 = 100;             // Film24, 24 fps, ":"
inline constexpr std::uint32_t kTimecodeFormat_25 = 101;             // VideoPAL, 25 fps, ":"
inline constexpr std::uint32_t kTimecodeFormat_2997DropFrame = 102;  // VideoNTSC, 30 df, ";"
inline constexpr std::uint32_t kTimecodeFormat_2997NonDrop = 103;    // VideoNTSC, 30, ":"
inline constexpr std::uint32_t kTimecodeFormat_30 = 104;             // Video30, 30, ":"
inline constexpr std::uint32_t kTimecodeFormat_50 = 105;             // VideoPAL_HD, 50, ":"
inline constexpr std::uint32_t kTimecodeFormat_5994DropFrame = 106;  // VideoNTSC_HD, 60 df, ";"
inline constexpr std::uint32_t kTimecodeFormat_5994NonDrop = 107;    // VideoNTSC_HD, 60, ":"
inline constexpr std::uint32_t kTimecodeFormat_60 = 108;             // Video60, 60, ":"
inline constexpr std::uint32_t kTimecodeFormat_Frames = 109;         // own rate, frame count
inline constexpr std::uint32_t kTimecodeFormat_23976 = 110;          // 23976, 24, ":"
inline constexpr std::uint32_t kTimecodeFormat_FeetFrames40 = 111;   // own rate, 40 per foot, "+"
inline constexpr std::uint32_t kTimecodeFormat_FeetFrames16 = 112;   // own rate, 16 per foot, "+"
inline constexpr std::uint32_t kTimecodeFormat_OwnRate = 200;        // own rate, value truncated
inline constexpr std::uint32_t kTimecodeFormat_Milliseconds = 201;   // 1000 fps, "hh:mm:ss.fff"

// A time shown as text in one of the formats above, with its broken-down
// fields (hours, minutes, seconds, frames) that IncrementHMSF steps.
//
//   Timecode tc;                                   // 0, kFrameRate_VideoNTSC, format 102
//   tc.GetString();                                // u"00;00;00;00"
//   tc.SetTime(u"00;01;00;02"_u16);                // frame 1800
//   tc.IncrementHMSF(0, 0, 0, -1);                 // u"00;00;59;29"
//
// Text forms (Style { showHours 1, no flags }):
//   hours-minutes-seconds-frames  "01:02:03:04"   (";" for 102 and 106; "." before
//                                                 the milliseconds of 201)
//   frame count (109)             "1234"
//   feet and frames (111, 112)    "12+05"
//
// Behaviour kept on purpose (do not "fix"):
//   - A negative time without showSign shows its hours mirrored (23 - hours)
//     and nothing else: -1 s in format 101 ⇒ "23:00:01:00"; with showSign
//     ⇒ "-00:00:01:00".
//   - Hours are not reduced modulo 24 when the fields are computed; GetString
//     shows them modulo 24.
//   - Minutes and seconds always have two digits; noLeadingZeros drops the
//     padding of hours and frames only. The frames of feet-and-frames text
//     always have two digits.
//   - IncrementFeetFrames changes only the time: the fields and the negative
//     flag stay as they were until the next SetTime or SetFormat, so
//     GetString shows the old fields (with the new time's sign).
//   - SetStyle never shifts the stored time, even when subtractOneFrame changes.
//   - Fields to time folds times above one day back into (0, 86400 s]; below
//     -86400 s it keeps adding -86400 s until the tick count wraps around to a
//     large positive value. Only format 109 or out-of-range fields reach it.
//   - The drop-frame step of IncrementHMSF skips frame numbers below 2 only,
//     also at 59.94 where four numbers are dropped: frames 2 and 3 of a
//     dropped second survive a step at 60 frames.
//   - Format 200 at a fractional own rate counts fields with the truncated
//     rate (29 at 29.97) but turns fields into time with the exact rate, so
//     text does not round-trip there.
//
// Parsing (SetTime with text and StringToTime):
//   - hours-minutes-seconds-frames: up to four groups of digits separated by
//     ":", ";" or ".", aligned from the right (frames last); one group without
//     separators is split from the right (two frame digits up to 100 fps,
//     three above 100, four above 1000, five above 10000): at 24 fps "1000" is
//     00:00:10:00 and "25" is 25 frames = 00:00:01:01. A leading separator
//     makes the single group a frame count. Frames above the rate carry into
//     seconds, seconds and minutes above 59 carry, hours wrap modulo 24.
//   - feet and frames: "feet+frames" (also ".", ":", ";"), or 1–2 digits as
//     frames only, or 3–8 digits as feet then two frame digits.
//   - Empty text ⇒ kTime_Zero. Rejected text ⇒ kTime_Invalid: "12:3a",
//     "1::2", "1:2:3:4:5", "-", "+", "::", any character other than digits,
//     signs and separators (non-ASCII digits and NUL included). Feet and
//     frames without any digit or separator ("-", "+") are rejected too; a
//     lone separator (":") is 0 feet 0 frames.
//   - Digit groups of any length are accepted and wrap in unsigned 32-bit
//     arithmetic; a group is then a 32-bit field (two's complement), except a
//     frame count (format 109, a leading separator, feet and frames), which
//     is taken as an unsigned 32-bit number.
//   - With addOneFrame (subtractOneFrame for SetTime) one frame at the rate
//     is added; for field text it is added after the sign is applied
//     ("-00:00:01:00" ⇒ -1 s + 1 frame), for frame counts and feet before it.
//   - A rate whose value is below 0.5 fps (the sentinel, negative rates)
//     leaves the frames field as typed: no frames carry into seconds. Where a
//     field is counted with a whole rate of 0 or less (for example format 200
//     with the sentinel), the fields are hours, minutes and seconds 0 and the
//     frames the whole frame count, and IncrementHMSF does no frame carry.
//
// Trace lines: every SetTime, field computation, drop-frame conversion,
// IncrementHMSF and IncrementFeetFrames writes one line, for example
// "SetTime(t): inTime: 1.5", to the installed trace sink (SetTimecodeTraceSink)
// and to the platform's debugger output (OutputDebugStringA on Windows; on
// POSIX stderr, only when the environment variable TOV_TRACE is set to a
// non-empty value other than "0"). With neither, no line is formatted.
//
// Caller contract: the formats that count at the caller's rate (109, 111,
// 112, 200) divide by its ticks per frame, so a rate made by
// FrameRate::Create(0) is undefined there, as for Time::ToFrame64.
//
// Not thread-safe: a Timecode is used by one thread at a time.
class TOV_API Timecode {
 public:
  // Display options, copied by value. The default is { 1, false, false, false }.
  struct Style {
    // 1 shows the hours field; any other value leaves hours and their separator out.
    std::uint32_t showHours = 1;
    // No padding of the hours and frames fields.
    bool noLeadingZeros = false;
    // "+" before a positive time; "-" before a negative one (not in formats
    // 109, 111, 112, which carry their own "-").
    bool showSign = false;
    // The object displays and edits the frame before the time it is given:
    // a given end time shows its last frame. GetTime still returns the given time.
    bool subtractOneFrame = false;
  };

  class PrivateImpl;

  // Time kTime_Zero, rate kFrameRate_VideoNTSC, format 102, default style.
  Timecode();
  Timecode(Time time, FrameRate rate, std::uint32_t format);
  Timecode(Time time, FrameRate rate, std::uint32_t format, const Style& style);
  // Copies build a new private object from the source's public time, rate,
  // format and style (the handle never shares its private object).
  Timecode(const Timecode& other);
  // Replaces time, rate, format and style with the other's (a new private
  // object, never shared).
  Timecode& operator=(const Timecode& other);
  ~Timecode();

  // The time given (the stored time plus one frame when subtractOneFrame is set).
  Time GetTime() const;
  // The rate as given, not the format's nominal rate.
  FrameRate GetFrameRate() const;
  // The rate a format counts at: its nominal rate (kTimecodeFormat_2997DropFrame
  // ⇒ kFrameRate_VideoNTSC, kTimecodeFormat_Milliseconds ⇒ 1000 per second), or
  // `own` for the formats that count at the caller's rate (frames, feet and
  // frames, own rate). An unknown format gives FrameRate() (no rate).
  static FrameRate GetFormatFrameRate(std::uint32_t format, FrameRate own);
  // The timecode format (one of the kTimecodeFormat values).
  std::uint32_t GetFormat() const;
  // The text style in use.
  Style GetStyle() const;
  // The text of the stored time.
  UTF16String GetString() const;

  // Stores the time (one frame earlier when subtractOneFrame is set) and
  // recomputes the fields.
  void SetTime(Time time);
  // Parses `text` with this object's rate and format (feet and frames for 111
  // and 112) and stores the result like SetTime(Time). "" ⇒ kTime_Zero. A
  // rejected text stores kTime_Invalid (less one frame with subtractOneFrame);
  // nothing else reports it.
  void SetTime(const UTF16String& text);
  // Replaces format and rate and recomputes fields and frame base. With
  // subtractOneFrame the stored time moves forward one frame at the old rate
  // and back one frame at the new one.
  void SetFormat(std::uint32_t format, FrameRate rate);
  // Replaces the style only.
  void SetStyle(const Style& style);

  // Adds to the fields with carries between them (frames into seconds at the
  // format's whole frames per second, seconds into minutes and minutes into
  // hours at 60), clamps hours to ±24:00:00:00 and turns the fields back into
  // the stored time. The drop-frame formats skip the dropped frame numbers.
  // On a negative time the increments are applied to the magnitude negated,
  // so +1 frame moves the time forward.
  void IncrementHMSF(std::int32_t hours, std::int32_t minutes, std::int32_t seconds,
                     std::int32_t frames);
  // Adds feet × frames-per-foot + frames (32-bit wrapping; 16 per foot for
  // format 112, 40 otherwise) frames at the object's rate to the stored time.
  // The fields are not refreshed (see above).
  void IncrementFeetFrames(std::int32_t feet, std::int32_t frames);

  // Parses text in `format` at `rate`; "" ⇒ kTime_Zero; rejected ⇒
  // kTime_Invalid. addOneFrame adds one frame at the rate to the result.
  static Time StringToTime(const UTF16String& text, FrameRate rate, std::uint32_t format,
                           bool addOneFrame);

 private:
  PrivateImpl* mImpl;  // owned, never null
};

// Receives each timecode trace line (narrow text, no line end). The pointer is
// valid only during the call.
using TimecodeTraceSink = void (*)(const char* line);

// Installs `sink` for every timecode trace line of the process (nullptr
// removes it; none by default) and returns the previous one. The sink is
// called on the thread that traces, possibly from several threads at once.
// Lines still go to the platform's debugger output as well.
TOV_API TimecodeTraceSink SetTimecodeTraceSink(TimecodeTraceSink sink);

}  // namespace TOV

// ---------------------------------------------------------------------------
// Legacy time records
// ---------------------------------------------------------------------------
namespace Halyard {

// Sample count ⇒ record of unit 0 (milliseconds): samples × 1000.0 / rate
// truncated toward zero, with the rate read as a signed 32-bit value and
// rounded through single precision first, kept in the low 32 bits of the
// value. The upper 32 bits of the value are cleared.
// 48000 samples at 48000 ⇒ { 0, 1000 }; 47999 ⇒ { 0, 999 }.
// A sample rate of 0 ⇒ { 0, 0 }.
TOV_API HaldTimeCode NumSamplesToHaldTimeCode(const AudioInfo& info, std::int64_t samples);

// Record ⇒ sample count, truncated toward zero:
//   unit 0: low 32 bits (unsigned) / 1000.0 × rate;
//   unit 1: all 64 bits (signed) / 10000000.0 × rate;
//   unit 3: the low 32 bits unchanged;
//   any other unit: 0.
// The rate is read as a signed 32-bit value. { 0, 1000 } at 44100 ⇒ 44100.
TOV_API std::int64_t HaldTimeCodeToNumSamples(const AudioInfo& info, HaldTimeCode timecode);

// Record ⇒ frame count, with Q = frameRateNumerator / frameRateDenominator
// computed in single precision:
//   unit 0: low 32 bits (unsigned) × 1000.0 / Q + 0.5, truncated;
//   unit 1: all 64 bits (signed) × 10000000.0 / Q + 0.5, truncated;
//   unit 3: the low 32 bits unchanged;
//   any other unit: 0.
// The double result is taken as a 64-bit integer (saturating; NaN ⇒ 0) and
// its low 32 bits are returned. { 0, 2 } with 4000 / 1 ⇒ 1. A Q of 0 ⇒ 0.
TOV_API std::uint32_t HaldTimeCodeToNumFrames(const VideoInfo& info, HaldTimeCode timecode);

namespace TimeUtils {

// Fills *dateTime with the current system time in UTC (kind 2): year,
// milliseconds, day, month, hour, minute, second; everything else cleared.
// nullptr ⇒ nothing happens.
TOV_API void GetSystemTime(VDateTime* dateTime);

// The current local time of day (no date) in the time format of the locale
// the system names: on Windows the system-default locale without user
// overrides; on POSIX the locale the environment names (LC_ALL, LC_TIME,
// LANG), falling back to the "C" locale ("13:04:05") when that locale is not
// installed. Local time, unlike GetSystemTime, which is UTC. "" when the
// system cannot format the time.
TOV_API UTF16String GetSystemTimeAsString();

}  // namespace TimeUtils
}  // namespace Halyard
