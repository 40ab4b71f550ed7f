// Timecode: time ⇄ hours/minutes/seconds/frames, frame counts and feet+frames.
//
// Field arithmetic wraps in 32 bits (fields) and 64 bits (frames and totals)
// through unsigned arithmetic, so hostile text or huge increments never become
// undefined behaviour. The repeated-subtraction loops of the field carries and
// of the frame normalisation are computed in closed form with the same result.
#include <cmath>
#include <string>

#include "basalt/string_stream.h"
#include "time/trace.h"
#include "tovfoundation/time.h"

namespace tovimpl::time {
namespace {

using TOV::FrameRate;
using TOV::Time;
namespace FR = TOV::FrameRates;

// -- Wrapping 32-bit field arithmetic.
constexpr std::int32_t Wrap32(std::uint64_t value) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}
constexpr std::int32_t Add32(std::int32_t a, std::int64_t b) {
  return Wrap32(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}
constexpr std::int32_t Neg32(std::int32_t a) { return Wrap32(0u - static_cast<std::uint64_t>(a)); }

// Floor division of `value` by a positive divisor: returns the quotient and
// leaves the remainder, in [0, divisor), in `value`. Equal to subtracting the
// divisor while value ≥ divisor and adding it while value < 0.
std::int64_t CarryOut(std::int64_t& value, std::int64_t divisor) {
  std::int64_t quotient = value / divisor;
  std::int64_t remainder = value % divisor;
  if (remainder < 0) {
    remainder += divisor;
    --quotient;
  }
  value = remainder;
  return quotient;
}
std::int32_t CarryOut32(std::int32_t& value, std::int32_t divisor) {
  std::int64_t wide = value;
  const std::int64_t quotient = CarryOut(wide, divisor);
  value = static_cast<std::int32_t>(wide);
  return Wrap32(static_cast<std::uint64_t>(quotient));
}

bool IsDropFrame(std::uint32_t format) {
  return format == TOV::kTimecodeFormat_2997DropFrame ||
         format == TOV::kTimecodeFormat_5994DropFrame;
}

bool IsFeetFrames(std::uint32_t format) {
  return format == TOV::kTimecodeFormat_FeetFrames40 || format == TOV::kTimecodeFormat_FeetFrames16;
}

std::int64_t FramesPerFoot(std::uint32_t format) {
  return format == TOV::kTimecodeFormat_FeetFrames16 ? 16 : 40;
}

// The rate a format imposes; `own` for the formats that use the caller's rate.
FrameRate FormatRate(std::uint32_t format, FrameRate own) {
  struct Row {
    std::uint32_t format;
    FrameRate rate;
  };
  static const Row kRates[] = {
      {TOV::kTimecodeFormat_24, FR::kFrameRate_Film24},
      {TOV::kTimecodeFormat_25, FR::kFrameRate_VideoPAL},
      {TOV::kTimecodeFormat_2997DropFrame, FR::kFrameRate_VideoNTSC},
      {TOV::kTimecodeFormat_2997NonDrop, FR::kFrameRate_VideoNTSC},
      {TOV::kTimecodeFormat_30, FR::kFrameRate_Video30},
      {TOV::kTimecodeFormat_50, FR::kFrameRate_VideoPAL_HD},
      {TOV::kTimecodeFormat_5994DropFrame, FR::kFrameRate_VideoNTSC_HD},
      {TOV::kTimecodeFormat_5994NonDrop, FR::kFrameRate_VideoNTSC_HD},
      {TOV::kTimecodeFormat_60, FR::kFrameRate_Video60},
      {TOV::kTimecodeFormat_23976, FR::kFrameRate_23976},
      {TOV::kTimecodeFormat_Milliseconds, FrameRate(1000.0)},
  };
  if (format == TOV::kTimecodeFormat_Frames || IsFeetFrames(format) ||
      format == TOV::kTimecodeFormat_OwnRate) {
    return own;
  }
  for (const Row& row : kRates) {
    if (row.format == format) return row.rate;
  }
  return FrameRate();
}

// Constants of the two drop-frame formats.
struct DropFrameScale {
  FrameRate rate;
  std::int64_t perHour;        // frame numbers in one hour
  std::int64_t perTenMinutes;  // in ten minutes
  std::int64_t firstMinute;    // in the first minute of ten (nothing dropped)
  std::int64_t perMinute;      // in each of the other nine
  std::int64_t perSecond;      // frame numbers per second
  std::int64_t dropped;        // frame numbers dropped per minute
};

DropFrameScale DropScale(std::uint32_t format) {
  if (format == TOV::kTimecodeFormat_5994DropFrame) {
    return {FR::kFrameRate_VideoNTSC_HD, 215784, 35964, 3600, 3596, 60, 4};
  }
  return {FR::kFrameRate_VideoNTSC, 107892, 17982, 1800, 1798, 30, 2};
}

// Builds a trace line only when a line would go somewhere.
template <typename Build>
void Trace(Build&& build) {
  if (!TraceWanted()) return;
  basalt::UTF8StringStream line;
  build(line);
  EmitTrace(line.str());
}

// Fields to time (hours, minutes, seconds, frames, negative flag, rate, format).
Time FieldsToTime(std::int32_t hours, std::int32_t minutes, std::int32_t seconds,
                  std::int64_t frames, bool negative, FrameRate rate, std::uint32_t format) {
  Time time;
  if (format == TOV::kTimecodeFormat_Frames) {
    time = Time(frames, rate);
  } else if (IsDropFrame(format)) {
    const DropFrameScale d = DropScale(format);
    const std::int64_t base =
        WrapAdd(WrapMul(d.perTenMinutes, minutes / 10), WrapMul(d.perHour, hours));
    const std::int32_t minuteOfTen = minutes % 10;
    std::int64_t total;
    if (minuteOfTen != 0) {
      const std::int64_t minuteStart =
          WrapAdd(WrapAdd(WrapMul(minuteOfTen - 1, d.perMinute), d.firstMinute), base);
      if (seconds != 0) {
        total = WrapAdd(WrapAdd(minuteStart, WrapMul(std::int64_t{seconds} - 1, d.perSecond)),
                        WrapAdd(frames, d.perSecond - d.dropped));
      } else if (frames > 0) {
        total = WrapSub(WrapAdd(minuteStart, frames), d.dropped);
      } else {
        total = minuteStart;
      }
    } else {
      total = WrapAdd(WrapAdd(base, WrapMul(seconds, d.perSecond)), frames);
    }
    Trace([&](std::ostream& s) {
      s << "HMSFToTime():"
        << " Hours: " << hours << " Minutes: " << minutes << " Seconds: " << seconds
        << " Frames: " << frames << " Total Frames: " << total;
    });
    time = Time(total, d.rate);
  } else {
    const FrameRate formatRate = FormatRate(format, rate);
    const std::int32_t totalSeconds =
        Add32(Wrap32(static_cast<std::uint64_t>(
                         Add32(Wrap32(static_cast<std::uint64_t>(hours) * 60u), minutes)) *
                     60u),
              seconds);
    std::int64_t total;
    switch (format) {
      case TOV::kTimecodeFormat_2997NonDrop:
        total = WrapAdd(WrapMul(totalSeconds, 30), frames);
        break;
      case TOV::kTimecodeFormat_5994NonDrop:
        total = WrapAdd(WrapMul(totalSeconds, 60), frames);
        break;
      case TOV::kTimecodeFormat_23976:
        total = WrapAdd(WrapMul(totalSeconds, 24), frames);
        break;
      default:
        total =
            WrapAdd(TruncateToInt64(formatRate.GetValue() *
                                    static_cast<double>(static_cast<std::uint32_t>(totalSeconds))),
                    frames);
        break;
    }
    time = Time(total, formatRate);
  }
  if (negative) time = -time;
  Trace([&](std::ostream& s) {
    s << "HMSFToTime(): Exit:"
      << " time: " << time;
  });

  // Fold into one day. Above a day: subtract whole days down into (0, 1 day].
  // Below minus a day the loop adds minus a day until the tick count wraps
  // around to a large positive value; kept so on purpose, in unsigned steps.
  static const Time kOneDay(86400.0);
  static const Time kMinusOneDay(-86400.0);
  std::int64_t ticks = time.GetTicks();
  const std::int64_t day = kOneDay.GetTicks();
  if (ticks > day) ticks -= ((ticks - 1) / day) * day;
  while (ticks < kMinusOneDay.GetTicks()) ticks = WrapAdd(ticks, kMinusOneDay.GetTicks());
  return Time::TicksToTime(ticks);
}

UTF16String AsciiText(const std::string& text) {
  UTF16String out(text.size(), 0);
  for (std::size_t i = 0; i < text.size(); ++i) out[i] = static_cast<unsigned char>(text[i]);
  return out;
}

bool IsDigit(unsigned short c) { return c >= u'0' && c <= u'9'; }

// Feet-and-frames text ⇒ time.
Time ParseFeetFrames(const UTF16String& text, FrameRate rate, std::uint32_t format,
                     bool addOneFrame) {
  std::size_t at = 0;
  bool negative = false;
  if (!text.empty() && text[0] == u'-') {
    negative = true;
    at = 1;
  } else if (!text.empty() && text[0] == u'+') {
    at = 1;
  }
  std::uint32_t before = 0, after = 0;
  std::size_t digitsBefore = 0;
  bool separator = false;
  for (; at < text.size(); ++at) {
    const unsigned short c = text[at];
    if (c == u'+' || c == u'.' || c == u':' || c == u';') {
      if (separator) return TOV::kTime_Invalid;
      separator = true;
    } else if (IsDigit(c)) {
      const std::uint32_t digit = c - u'0';
      if (separator) {
        after = after * 10u + digit;
      } else {
        before = before * 10u + digit;
        ++digitsBefore;
      }
    } else {
      return TOV::kTime_Invalid;
    }
  }
  std::uint64_t feet = 0, frames = 0;
  if (separator) {
    feet = before;
    frames = after;
  } else if (digitsBefore == 0 || digitsBefore > 8) {
    return TOV::kTime_Invalid;
  } else if (digitsBefore <= 2) {
    frames = before;
  } else {
    feet = before / 100u;
    frames = before % 100u;
  }
  const auto count =
      static_cast<std::int64_t>(static_cast<std::uint64_t>(FramesPerFoot(format)) * feet + frames);
  Time time(count, rate);
  if (addOneFrame) time.AddFrames(1, rate);
  if (negative) time = -time;
  return time;
}

bool IsFieldSeparator(unsigned short c) { return c == u':' || c == u';' || c == u'.'; }

// Hours-minutes-seconds-frames text ⇒ time.
Time ParseHMSF(const UTF16String& text, FrameRate rate, std::uint32_t format, bool addOneFrame) {
  if (text.empty()) return TOV::kTime_Invalid;
  std::size_t at = 0;
  bool negative = false;
  if (text[0] == u'-') {
    negative = true;
    at = 1;
  } else if (text[0] == u'+') {
    at = 1;
  }
  if (at == text.size()) return TOV::kTime_Invalid;
  const bool leadingSeparator = IsFieldSeparator(text[at]);
  if (leadingSeparator) {
    ++at;
    if (at == text.size()) return TOV::kTime_Invalid;
  }

  std::uint32_t groups[4] = {0, 0, 0, 0};
  int count = 1;
  bool afterSeparator = leadingSeparator;
  for (; at < text.size(); ++at) {
    const unsigned short c = text[at];
    if (IsFieldSeparator(c)) {
      if (format == TOV::kTimecodeFormat_Frames || afterSeparator || count == 4) {
        return TOV::kTime_Invalid;
      }
      ++count;
      afterSeparator = true;
    } else if (IsDigit(c)) {
      groups[count - 1] = groups[count - 1] * 10u + static_cast<std::uint32_t>(c - u'0');
      afterSeparator = false;
    } else {
      return TOV::kTime_Invalid;
    }
  }

  const FrameRate useRate = format == TOV::kTimecodeFormat_Milliseconds ? FrameRate(1000.0) : rate;

  // A plain frame count.
  if (count == 1 && (format == TOV::kTimecodeFormat_Frames || leadingSeparator)) {
    Time time(static_cast<std::int64_t>(groups[0]), useRate);
    if (addOneFrame) time.AddFrames(1, useRate);
    if (negative) time = -time;
    return time;
  }

  std::int32_t hours = 0, minutes = 0, seconds = 0;
  std::int64_t frames = 0;
  if (count == 1) {
    // One run of digits, split from the right.
    std::uint32_t power = 100;
    if (useRate > FrameRate(10000.0)) {
      power = 100000;
    } else if (useRate > FrameRate(1000.0)) {
      power = 10000;
    } else if (useRate > FrameRate(100.0)) {
      power = 1000;
    }
    std::uint32_t number = groups[0];
    if (number < power) {
      frames = number;
    } else {
      frames = number % power;
      number /= power;
      seconds = static_cast<std::int32_t>(number % 100u);
      number /= 100u;
      minutes = static_cast<std::int32_t>(number % 100u);
      hours = static_cast<std::int32_t>(number / 100u);
    }
  } else {
    frames = Wrap32(groups[count - 1]);
    seconds = Wrap32(groups[count - 2]);
    if (count >= 3) minutes = Wrap32(groups[count - 3]);
    if (count == 4) hours = Wrap32(groups[0]);
  }

  // Frames above the rate carry into seconds, each carry taking the rate
  // rounded to a whole number. Closed form of "while frames > value".
  const double value = useRate.GetValue();
  if (value >= 0.5 && std::isfinite(value)) {
    const std::int64_t step = TruncateToInt64(value + 0.5);
    const std::int64_t limit = TruncateToInt64(std::floor(value));
    if (frames > limit) {
      const std::int64_t carries = (frames - limit + step - 1) / step;
      frames -= carries * step;
      seconds = Add32(seconds, carries);
    }
  }
  if (seconds > 59) {
    minutes = Add32(minutes, seconds / 60);
    seconds %= 60;
  }
  if (minutes > 59) {
    hours = Add32(hours, minutes / 60);
    minutes %= 60;
  }
  if (hours > 23) hours %= 24;

  Time time = FieldsToTime(hours, minutes, seconds, frames, negative, useRate, format);
  if (addOneFrame) time.AddFrames(1, useRate);
  return time;
}

Time ParseText(const UTF16String& text, FrameRate rate, std::uint32_t format, bool addOneFrame) {
  if (text.empty()) return TOV::kTime_Zero;
  if (IsFeetFrames(format)) return ParseFeetFrames(text, rate, format, addOneFrame);
  return ParseHMSF(text, rate, format, addOneFrame);
}

}  // namespace
}  // namespace tovimpl::time

namespace TOV {

using namespace tovimpl::time;

class TOV_HIDDEN Timecode::PrivateImpl : public Impl {
 public:
  PrivateImpl(Time time, FrameRate rate, std::uint32_t format, const Style& style)
      : mTime(time), mFrameRate(rate), mFormat(format), mStyle(style) {
    if (mStyle.subtractOneFrame) mTime.AddFrames(-1, mFrameRate);
    mNegative = mTime < kTime_Zero;
    ComputeFrameBase();
    TimeToFields();
  }

  Time PublicTime() const {
    Time time = mTime;
    if (mStyle.subtractOneFrame) time.AddFrames(1, mFrameRate);
    return time;
  }

  void Store(Time time) {
    mTime = time;
    if (mStyle.subtractOneFrame) mTime.AddFrames(-1, mFrameRate);
    mNegative = mTime < kTime_Zero;
    TimeToFields();
  }

  // Whole frames per second for stepping, and the padding of the frames field.
  void ComputeFrameBase() {
    if (mFormat == kTimecodeFormat_Frames) {
      mFramesPerSecond = std::numeric_limits<std::int64_t>::max();
      mFrameDigits = 0;
      return;
    }
    const FrameRate rate = FormatRate(mFormat, mFrameRate);
    if (rate == FrameRates::kFrameRate_VideoNTSC) {
      mFramesPerSecond = 30;
    } else if (rate == FrameRates::kFrameRate_VideoNTSC_HD) {
      mFramesPerSecond = 60;
    } else if (rate == FrameRates::kFrameRate_23976) {
      mFramesPerSecond = 24;
    } else {
      mFramesPerSecond = TruncateToInt64(rate.GetValue());
    }
    mFrameDigits = 0;
    for (std::int64_t value = mFramesPerSecond; value > 10; value /= 10) ++mFrameDigits;
  }

  // Time ⇒ fields.
  void TimeToFields() {
    if (mFormat == kTimecodeFormat_Frames) {
      mHours = mMinutes = mSeconds = 0;
      mFrames = mTime.ToFrame64(mFrameRate);
    } else if (IsDropFrame(mFormat)) {
      const DropFrameScale d = DropScale(mFormat);
      const std::int64_t frameNumber = mTime.ToFrame64(d.rate);
      std::uint64_t n = frameNumber < 0 ? 0u - static_cast<std::uint64_t>(frameNumber)
                                        : static_cast<std::uint64_t>(frameNumber);
      const auto perHour = static_cast<std::uint64_t>(d.perHour);
      const auto perTen = static_cast<std::uint64_t>(d.perTenMinutes);
      const auto first = static_cast<std::uint64_t>(d.firstMinute);
      const auto perMinute = static_cast<std::uint64_t>(d.perMinute);
      const auto perSecond = static_cast<std::uint64_t>(d.perSecond);
      const std::uint64_t hours = n / perHour;
      n %= perHour;
      std::uint64_t minutes = 0;
      if (n >= perTen) {
        minutes = 10 * (n / perTen);
        n %= perTen;
      }
      if (n >= first) {
        const std::uint64_t k = (n - first) / perMinute + 1;
        minutes += k;
        n -= perMinute * k;
      }
      mHours = Wrap32(hours);
      mMinutes = Wrap32(minutes);
      mSeconds = Wrap32(n / perSecond);
      mFrames = static_cast<std::int64_t>(n % perSecond);
    } else {
      mHours = mMinutes = mSeconds = 0;
      mFrames = 0;
      const FrameRate rate = FormatRate(mFormat, mFrameRate);
      std::int64_t counting;
      switch (mFormat) {
        case kTimecodeFormat_2997NonDrop:
          counting = 30;
          break;
        case kTimecodeFormat_5994NonDrop:
          counting = 60;
          break;
        case kTimecodeFormat_23976:
          counting = 24;
          break;
        default:
          counting = TruncateToInt64(rate.GetValue());
          break;
      }
      const std::int64_t frameNumber = mTime.ToFrame64(rate);
      std::uint64_t n;
      if (frameNumber < 0) {
        n = 0u - static_cast<std::uint64_t>(frameNumber);
        mNegative = true;
      } else {
        n = static_cast<std::uint64_t>(frameNumber);
        mNegative = false;
      }
      if (counting > 0) {
        const auto perSecond = static_cast<std::uint64_t>(counting);
        const std::uint64_t perHour = 3600u * perSecond;
        const std::uint64_t perMinute = 60u * perSecond;
        if (perHour != 0 && perMinute != 0) {
          mHours = Wrap32(n / perHour);
          n %= perHour;
          mMinutes = Wrap32(n / perMinute);
          n %= perMinute;
        }
        mSeconds = Wrap32(n / perSecond);
        n %= perSecond;
      }
      mFrames = static_cast<std::int64_t>(n);
    }
    Trace([&](std::ostream& s) {
      s << "TimeToHMSF(): Exit:"
        << " mTime: " << mTime << " mHours: " << mHours << " mMinutes: " << mMinutes
        << " mSeconds: " << mSeconds << " mFrames: " << mFrames;
    });
  }

  // Stores the fields a step computed; negative hours become the sign and
  // their magnitude.
  void StoreStep(std::int32_t hours, std::int32_t minutes, std::int32_t seconds,
                 std::int64_t frames) {
    if (hours < 0) {
      mNegative = true;
      hours = Neg32(hours);
    }
    mHours = hours;
    mMinutes = minutes;
    mSeconds = seconds;
    mFrames = frames;
  }

  // The drop-frame step of IncrementHMSF: fps 30 or 60, `drop` 2 or 4.
  void DropFrameStep(std::int64_t fps, std::int64_t drop, std::int32_t h, std::int32_t m,
                     std::int32_t s, std::int32_t f) {
    std::int64_t frames = WrapAdd(mFrames, f);
    std::int32_t seconds = Add32(mSeconds, CarryOut(frames, fps));
    seconds = Add32(seconds, s);
    std::int32_t minutes = Add32(mMinutes, CarryOut32(seconds, 60));
    minutes = Add32(minutes, m);
    std::int32_t hours = Add32(mHours, CarryOut32(minutes, 60));
    hours = Add32(hours, h);
    if (hours < 0 && mHours >= 0) {
      mNegative = true;
      seconds = 59 - seconds;
      hours = Add32(hours, 1);
      minutes = 59 - minutes;
      frames = WrapSub(fps, frames);
    }
    if (hours < -24 || hours > 24) {
      hours = hours < 0 ? -24 : 24;
      minutes = seconds = 0;
      frames = 0;
    }
    // Skip the dropped frame numbers (the limit is 2 at both rates).
    if (minutes % 10 != 0 && seconds == 0 && frames < 2) {
      if (f < 0) {
        minutes -= 1;
        seconds = 59;
        frames = fps - 1;
      } else {
        frames = drop;
      }
    }
    StoreStep(hours, minutes, seconds, frames);
  }

  // The field step of IncrementHMSF for every other format.
  void FieldStep(std::int32_t h, std::int32_t m, std::int32_t s, std::int32_t f) {
    const std::int64_t perSecond = mFramesPerSecond;
    std::int64_t frames = WrapAdd(mFrames, f);
    std::int32_t seconds = mSeconds;
    if (perSecond > 0) seconds = Add32(seconds, CarryOut(frames, perSecond));
    seconds = Add32(seconds, s);
    std::int32_t minutes = Add32(mMinutes, CarryOut32(seconds, 60));
    minutes = Add32(minutes, m);
    std::int32_t hours = Add32(mHours, CarryOut32(minutes, 60));
    hours = Add32(hours, h);
    if (hours < 0 && !mNegative) {
      frames = WrapSub(perSecond, frames);
      seconds = 59 - seconds;
      minutes = 59 - minutes;
      hours = Add32(hours, 1);
      mNegative = true;
    }
    if (hours > 24) {
      hours = 24;
      minutes = seconds = 0;
      frames = 0;
    } else if (hours < -24) {
      hours = -24;
      minutes = seconds = 0;
      frames = 0;
    }
    StoreStep(hours, minutes, seconds, frames);
  }

  void IncrementHMSF(std::int32_t h, std::int32_t m, std::int32_t s, std::int32_t f) {
    Trace([&](std::ostream& out) {
      out << "IncrementHMSF():"
          << " inHours: " << h << " inMinutes: " << m << " inSeconds: " << s << " inFrames: " << f;
    });
    Trace([&](std::ostream& out) {
      out << "IncrementHMSF(): Entry:"
          << " mHours: " << mHours << " mMinutes: " << mMinutes << " mSeconds: " << mSeconds
          << " mFrames: " << mFrames;
    });
    if (mNegative) {
      h = Neg32(h);
      m = Neg32(m);
      s = Neg32(s);
      f = Neg32(f);
    }
    if (mFormat == kTimecodeFormat_2997DropFrame) {
      DropFrameStep(30, 2, h, m, s, f);
    } else if (mFormat == kTimecodeFormat_5994DropFrame) {
      DropFrameStep(60, 4, h, m, s, f);
    } else {
      FieldStep(h, m, s, f);
    }
    Trace([&](std::ostream& out) {
      out << "IncrementHMSF(): Exit:"
          << " mHours: " << mHours << " mMinutes: " << mMinutes << " mSeconds: " << mSeconds
          << " mFrames: " << mFrames;
    });
    mTime = FieldsToTime(mHours, mMinutes, mSeconds, mFrames, mNegative, mFrameRate, mFormat);
    mNegative = mTime < kTime_Zero;
  }

  std::string Text() const {
    std::string out;
    const bool negative = mTime < kTime_Zero;
    const bool positive = mTime > kTime_Zero;
    const bool ownSign = mFormat == kTimecodeFormat_Frames || IsFeetFrames(mFormat);
    if (mStyle.showSign) {
      if (positive) {
        out += '+';
      } else if (negative && !ownSign) {
        out += '-';
      }
    }
    if (mFormat == kTimecodeFormat_Frames) {
      out += std::to_string(mTime.ToFrame64(mFrameRate));
      return out;
    }
    if (IsFeetFrames(mFormat)) {
      const std::int64_t n = mTime.ToFrame64(mFrameRate);
      std::int64_t feet = n / FramesPerFoot(mFormat);
      std::int64_t rest = n % FramesPerFoot(mFormat);
      if (negative) {
        out += '-';
        feet = WrapSub(0, feet);
        rest = -rest;
      }
      out += std::to_string(feet);
      out += '+';
      if (rest >= -9 && rest <= 9) out += '0';
      out += std::to_string(rest);
      return out;
    }
    const char separator = IsDropFrame(mFormat) ? ';' : ':';
    if (mStyle.showHours == 1) {
      std::int32_t hours = mHours % 24;
      if (!mStyle.showSign && negative) hours = 23 - hours;
      if (hours < 10 && !mStyle.noLeadingZeros) out += '0';
      out += std::to_string(hours);
      out += separator;
    }
    AppendPadded(out, mMinutes, 2);
    out += separator;
    AppendPadded(out, mSeconds, 2);
    out += mFormat == kTimecodeFormat_Milliseconds ? '.' : separator;
    const std::size_t frameWidth =
        (mFrameDigits >= 1 && mFrameDigits <= 4 && !mStyle.noLeadingZeros) ? mFrameDigits + 1 : 0;
    AppendPadded(out, mFrames, frameWidth);
    return out;
  }

  // Decimal text of `value`, a non-negative value padded with zeros to `width`.
  static void AppendPadded(std::string& out, std::int64_t value, std::size_t width) {
    const std::string digits = std::to_string(value);
    if (value >= 0 && digits.size() < width) out.append(width - digits.size(), '0');
    out += digits;
  }

  Time mTime;
  FrameRate mFrameRate;
  std::uint32_t mFormat;
  Style mStyle;
  std::int32_t mHours = 0;
  std::int32_t mMinutes = 0;
  std::int32_t mSeconds = 0;
  std::int64_t mFrames = 0;
  bool mNegative = false;
  std::int64_t mFramesPerSecond = 0;
  std::uint32_t mFrameDigits = 0;
};

Timecode::Timecode()
    : mImpl(new PrivateImpl(kTime_Zero, FrameRates::kFrameRate_VideoNTSC,
                            kTimecodeFormat_2997DropFrame, Style{})) {}

Timecode::Timecode(Time time, FrameRate rate, std::uint32_t format)
    : mImpl(new PrivateImpl(time, rate, format, Style{})) {}

Timecode::Timecode(Time time, FrameRate rate, std::uint32_t format, const Style& style)
    : mImpl(new PrivateImpl(time, rate, format, style)) {}

Timecode::Timecode(const Timecode& other)
    : mImpl(new PrivateImpl(other.mImpl->PublicTime(), other.mImpl->mFrameRate,
                            other.mImpl->mFormat, other.mImpl->mStyle)) {}

Timecode& Timecode::operator=(const Timecode& other) {
  PrivateImpl* fresh = new PrivateImpl(other.mImpl->PublicTime(), other.mImpl->mFrameRate,
                                       other.mImpl->mFormat, other.mImpl->mStyle);
  delete mImpl;
  mImpl = fresh;
  return *this;
}

Timecode::~Timecode() { delete mImpl; }

Time Timecode::GetTime() const { return mImpl->PublicTime(); }

FrameRate Timecode::GetFormatFrameRate(std::uint32_t format, FrameRate own) {
  return FormatRate(format, own);
}

FrameRate Timecode::GetFrameRate() const { return mImpl->mFrameRate; }

std::uint32_t Timecode::GetFormat() const { return mImpl->mFormat; }

Timecode::Style Timecode::GetStyle() const { return mImpl->mStyle; }

UTF16String Timecode::GetString() const { return AsciiText(mImpl->Text()); }

void Timecode::SetTime(Time time) {
  Trace([&](std::ostream& s) {
    s << "SetTime(t):"
      << " inTime: " << time;
  });
  mImpl->Store(time);
}

void Timecode::SetTime(const UTF16String& text) {
  mImpl->Store(ParseText(text, mImpl->mFrameRate, mImpl->mFormat, mImpl->mStyle.subtractOneFrame));
}

void Timecode::SetFormat(std::uint32_t format, FrameRate rate) {
  if (mImpl->mStyle.subtractOneFrame) {
    mImpl->mTime.AddFrames(1, mImpl->mFrameRate);
    mImpl->mTime.AddFrames(-1, rate);
  }
  mImpl->mFormat = format;
  mImpl->mFrameRate = rate;
  mImpl->mNegative = mImpl->mTime < kTime_Zero;
  mImpl->TimeToFields();
  mImpl->ComputeFrameBase();
}

void Timecode::SetStyle(const Style& style) { mImpl->mStyle = style; }

void Timecode::IncrementHMSF(std::int32_t hours, std::int32_t minutes, std::int32_t seconds,
                             std::int32_t frames) {
  mImpl->IncrementHMSF(hours, minutes, seconds, frames);
}

void Timecode::IncrementFeetFrames(std::int32_t feet, std::int32_t frames) {
  Trace([&](std::ostream& s) {
    s << "IncrementFeetFrames():"
      << " inFeet: " << feet << " inFrames: " << frames;
  });
  const std::int32_t perFoot = static_cast<std::int32_t>(FramesPerFoot(mImpl->mFormat));
  const std::int32_t count =
      Add32(Wrap32(static_cast<std::uint64_t>(feet) * static_cast<std::uint64_t>(perFoot)), frames);
  mImpl->mTime.AddFrames(count, mImpl->mFrameRate);
}

Time Timecode::StringToTime(const UTF16String& text, FrameRate rate, std::uint32_t format,
                            bool addOneFrame) {
  return ParseText(text, rate, format, addOneFrame);
}

}  // namespace TOV
