// Time's stream operator, the timecode trace channel, and the legacy time
// record conversions with the system clock queries.
#include "tovfoundation/time.h"

#include <atomic>
#include <cstring>
#include <ostream>
#include <vector>

#include "platform/clock.h"
#include "platform/debug.h"
#include "time/trace.h"

namespace TOV {

std::ostream& operator<<(std::ostream& stream, const Time& time) {
  return stream << static_cast<double>(time.GetTicks()) / tovimpl::time::kTicksPerSecondDouble;
}

namespace {
std::atomic<TimecodeTraceSink> gTraceSink{nullptr};
}  // namespace

TimecodeTraceSink SetTimecodeTraceSink(TimecodeTraceSink sink) { return gTraceSink.exchange(sink); }

}  // namespace TOV

namespace tovimpl::time {

bool TraceWanted() {
  return TOV::gTraceSink.load(std::memory_order_acquire) != nullptr ||
         platform::IsDebugOutputEnabled();
}

void EmitTrace(const std::string& line) {
  if (const TOV::TimecodeTraceSink sink = TOV::gTraceSink.load(std::memory_order_acquire)) {
    sink(line.c_str());
  }
  platform::OutputDebugStringA(line.c_str());
}

}  // namespace tovimpl::time

namespace Halyard {

namespace {

using tovimpl::time::TruncateToInt64;

// The low 32 bits of the value, unsigned (units 0 and 3).
double LowValue(const HaldTimeCode& timecode) {
  return static_cast<double>(static_cast<std::uint32_t>(timecode.value));
}

// All 64 bits of the value, signed (unit 1).
double SignedValue(const HaldTimeCode& timecode) {
  return static_cast<double>(static_cast<std::int64_t>(timecode.value));
}

}  // namespace

HaldTimeCode NumSamplesToHaldTimeCode(const AudioInfo& info, std::int64_t samples) {
  HaldTimeCode result{};
  result.unit = 0;
  const auto rate = static_cast<std::int32_t>(info.sampleRate);
  if (rate == 0) return result;
  // The rate passes through single precision before the division.
  const double rateValue = static_cast<double>(static_cast<float>(rate));
  const std::int64_t milliseconds =
      TruncateToInt64(static_cast<double>(samples) * 1000.0 / rateValue);
  result.value = static_cast<std::uint32_t>(static_cast<std::uint64_t>(milliseconds));
  return result;
}

std::int64_t HaldTimeCodeToNumSamples(const AudioInfo& info, HaldTimeCode timecode) {
  const double rate = static_cast<double>(static_cast<std::int32_t>(info.sampleRate));
  switch (timecode.unit) {
    case 0:
      return TruncateToInt64(LowValue(timecode) / 1000.0 * rate);
    case 1:
      return TruncateToInt64(SignedValue(timecode) / 10000000.0 * rate);
    case 3:
      return static_cast<std::uint32_t>(timecode.value);
    default:
      return 0;
  }
}

std::uint32_t HaldTimeCodeToNumFrames(const VideoInfo& info, HaldTimeCode timecode) {
  const float q =
      static_cast<float>(info.frameRateNumerator) / static_cast<float>(info.frameRateDenominator);
  double frames = 0.0;
  switch (timecode.unit) {
    case 0:
      if (q == 0.0f) return 0;
      frames = LowValue(timecode) * 1000.0 / static_cast<double>(q) + 0.5;
      break;
    case 1:
      if (q == 0.0f) return 0;
      frames = SignedValue(timecode) * 10000000.0 / static_cast<double>(q) + 0.5;
      break;
    case 3:
      return static_cast<std::uint32_t>(timecode.value);
    default:
      return 0;
  }
  return static_cast<std::uint32_t>(static_cast<std::uint64_t>(TruncateToInt64(frames)));
}

namespace TimeUtils {

void GetSystemTime(VDateTime* dateTime) {
  if (dateTime == nullptr) return;
  std::memset(dateTime, 0, sizeof *dateTime);
  const tovimpl::platform::SystemTime now = tovimpl::platform::UtcNow();
  dateTime->year = now.year;
  dateTime->milliseconds = now.milliseconds;
  dateTime->kind = 2;
  dateTime->day = static_cast<std::uint8_t>(now.day);
  dateTime->month = static_cast<std::uint8_t>(now.month);
  dateTime->hour = static_cast<std::uint8_t>(now.hour);
  dateTime->minute = static_cast<std::uint8_t>(now.minute);
  dateTime->second = static_cast<std::uint8_t>(now.second);
}

UTF16String GetSystemTimeAsString() {
  return tovimpl::platform::LocalTimeOfDayText().ValueOr(UTF16String());
}

}  // namespace TimeUtils
}  // namespace Halyard
