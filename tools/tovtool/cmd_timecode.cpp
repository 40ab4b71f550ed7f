// tovtool timecode: converts between frame counts, seconds, ticks and timecode
// text in any format, and steps the fields.
#include <cstdio>
#include <iostream>
#include <string>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace {

using TOV::FrameRate;
using TOV::Time;
using TOV::Timecode;
namespace FR = TOV::FrameRates;

struct FormatName {
  const char* name;
  std::uint32_t code;
};

const FormatName kFormats[] = {
    {"24", TOV::kTimecodeFormat_24},
    {"25", TOV::kTimecodeFormat_25},
    {"2997df", TOV::kTimecodeFormat_2997DropFrame},
    {"2997nd", TOV::kTimecodeFormat_2997NonDrop},
    {"30", TOV::kTimecodeFormat_30},
    {"50", TOV::kTimecodeFormat_50},
    {"5994df", TOV::kTimecodeFormat_5994DropFrame},
    {"5994nd", TOV::kTimecodeFormat_5994NonDrop},
    {"60", TOV::kTimecodeFormat_60},
    {"frames", TOV::kTimecodeFormat_Frames},
    {"23976", TOV::kTimecodeFormat_23976},
    {"feet40", TOV::kTimecodeFormat_FeetFrames40},
    {"feet16", TOV::kTimecodeFormat_FeetFrames16},
    {"own", TOV::kTimecodeFormat_OwnRate},
    {"ms", TOV::kTimecodeFormat_Milliseconds},
};

const char* FormatLabel(std::uint32_t code) {
  for (const FormatName& format : kFormats) {
    if (format.code == code) return format.name;
  }
  return "?";
}

std::uint32_t ParseFormat(const std::string& text) {
  for (const FormatName& format : kFormats) {
    if (text == format.name) return format.code;
  }
  const std::int64_t code = tovtool::ParseInteger(text, "--format");
  for (const FormatName& format : kFormats) {
    if (static_cast<std::int64_t>(format.code) == code) return format.code;
  }
  throw tovtool::UsageError("unknown format '" + text + "'");
}

FrameRate ParseRate(const std::string& text) {
  if (text == "2997" || text == "ntsc") return FR::kFrameRate_VideoNTSC;
  if (text == "5994" || text == "ntschd") return FR::kFrameRate_VideoNTSC_HD;
  if (text == "23976") return FR::kFrameRate_23976;
  if (text == "pal") return FR::kFrameRate_VideoPAL;
  const double fps = tovtool::ParseNumber(text, "--rate");
  // A frame must last at least one tick: above 254016000000 fps it would
  // last none, and every division by the frame length would fail.
  if (fps < 1.0 || fps > tovimpl::time::kTicksPerSecondDouble) {
    throw tovtool::UsageError("--rate must be 1 to 254016000000 frames per second, not '" + text +
                              "'");
  }
  const FrameRate rate(fps);
  if (rate.GetTicksPerFrame() < 1) throw tovtool::UsageError("--rate is too fast: '" + text + "'");
  return rate;
}

// Every time the command works with lies within the library's time range,
// kTime_Min to kTime_Max (100 hours either way), so no field or frame count
// overflows.
constexpr std::int64_t kMaxTicks = TOV::kTime_Max.GetTicks();
constexpr std::int32_t kMaxStep = 1000000;

Time CheckedTime(std::int64_t count, std::int64_t ticksPerUnit, const std::string& what) {
  if (ticksPerUnit <= 0 || count > kMaxTicks / ticksPerUnit ||
      count < -(kMaxTicks / ticksPerUnit)) {
    throw tovtool::UsageError(what + " is beyond the time range (100 hours either way)");
  }
  return Time::TicksToTime(count * ticksPerUnit);
}

// "H:M:S:F" or "A:B" as signed 32-bit numbers.
std::vector<std::int32_t> ParseFields(const std::string& text, std::size_t count,
                                      const std::string& what) {
  std::vector<std::int32_t> fields;
  std::size_t start = 0;
  while (true) {
    const std::size_t colon = text.find(':', start);
    const std::string part = text.substr(start, colon == std::string::npos ? colon : colon - start);
    const std::int64_t value = tovtool::ParseInteger(part, what, -kMaxStep, kMaxStep);
    fields.push_back(static_cast<std::int32_t>(value));
    if (colon == std::string::npos) break;
    start = colon + 1;
  }
  if (fields.size() != count) {
    throw tovtool::UsageError(what + " needs " + std::to_string(count) + " numbers");
  }
  return fields;
}

std::string Seconds(Time time) {
  char text[64];
  std::snprintf(text, sizeof text, "%.9f", static_cast<double>(time.GetTicks()) / 254016000000.0);
  return text;
}

int RunTimecode(const tovtool::Args& input) {
  tovtool::Args args = input;
  const std::uint32_t format = ParseFormat(tovtool::TakeOption(args, "format").value_or("2997df"));
  const auto rateText = tovtool::TakeOption(args, "rate");
  const FrameRate own = rateText ? ParseRate(*rateText) : FR::kFrameRate_Film24;
  const FrameRate rate = rateText ? own : Timecode::GetFormatFrameRate(format, own);
  Timecode::Style style;
  style.showHours = tovtool::TakeFlag(args, "hide-hours") ? 0 : 1;
  style.noLeadingZeros = tovtool::TakeFlag(args, "no-leading-zeros");
  style.showSign = tovtool::TakeFlag(args, "show-sign");
  style.subtractOneFrame = tovtool::TakeFlag(args, "subtract-one-frame");
  const auto frames = tovtool::TakeOption(args, "frames");
  const auto seconds = tovtool::TakeOption(args, "seconds");
  const auto ticks = tovtool::TakeOption(args, "ticks");
  const auto step = tovtool::TakeOption(args, "step");
  const auto stepFeet = tovtool::TakeOption(args, "step-feet");
  tovtool::RejectUnknownOptions(args);
  const int inputs =
      (frames ? 1 : 0) + (seconds ? 1 : 0) + (ticks ? 1 : 0) + static_cast<int>(args.size());
  if (inputs != 1)
    throw tovtool::UsageError("give exactly one of TEXT, --frames, --seconds, --ticks");

  const FrameRate countRate = Timecode::GetFormatFrameRate(format, rate);
  Timecode tc(Time(), rate, format, style);
  if (frames) {
    tc.SetTime(CheckedTime(tovtool::ParseInteger(*frames, "--frames"), countRate.GetTicksPerFrame(),
                           "--frames " + *frames));
  } else if (seconds) {
    const double value = tovtool::ParseNumber(*seconds, "--seconds");
    if (value < -360000.0 || value > 360000.0) {
      throw tovtool::UsageError("--seconds must be -360000 to 360000, not '" + *seconds + "'");
    }
    tc.SetTime(Time(value));
  } else if (ticks) {
    tc.SetTime(Time::TicksToTime(tovtool::ParseInteger(*ticks, "--ticks", -kMaxTicks, kMaxTicks)));
  } else {
    tc.SetTime(basalt::UTF8to16(args.front()));
    if (tc.GetTime() == TOV::kTime_Invalid ||
        (style.subtractOneFrame && tc.GetTime() == TOV::kTime_Invalid + Time(1, rate))) {
      std::cerr << "tovtool timecode: '" << args.front() << "' is not valid " << FormatLabel(format)
                << " (" << format << ") timecode\n";
      return 1;
    }
  }
  if (step) {
    const auto f = ParseFields(*step, 4, "--step");
    tc.IncrementHMSF(f[0], f[1], f[2], f[3]);
  }
  if (stepFeet) {
    const auto f = ParseFields(*stepFeet, 2, "--step-feet");
    const std::int64_t perFoot = format == TOV::kTimecodeFormat_FeetFrames16 ? 16 : 40;
    const Time step = CheckedTime(std::int64_t{f[0]} * perFoot + f[1], rate.GetTicksPerFrame(),
                                  "--step-feet " + *stepFeet);
    const std::int64_t after = tc.GetTime().GetTicks() + step.GetTicks();
    if (after < -kMaxTicks || after > kMaxTicks) {
      throw tovtool::UsageError("--step-feet " + *stepFeet +
                                " leaves the time range (100 hours either way)");
    }
    tc.IncrementFeetFrames(f[0], f[1]);
    tc.SetFormat(format, rate);  // refresh the fields
  }

  const Time time = tc.GetTime();
  std::cout << "format:  " << format << " (" << FormatLabel(format) << ") at "
            << countRate.GetValue() << " fps\n"
            << "text:    " << basalt::UTF16to8(tc.GetString()) << '\n'
            << "frames:  " << time.ToFrame64(countRate) << '\n'
            << "seconds: " << Seconds(time) << '\n'
            << "ticks:   " << time.GetTicks() << '\n'
            << "in every format:\n";
  for (const FormatName& other : kFormats) {
    const Timecode view(time, rate, other.code, style);
    std::string label = std::to_string(other.code) + " " + other.name;
    label.resize(12, ' ');
    std::cout << "  " << label << basalt::UTF16to8(view.GetString()) << '\n';
  }
  return 0;
}

TOVTOOL_COMMAND({"timecode", "convert between frames, seconds, ticks and timecode text",
                 "tovtool timecode [--format F] [--rate R] [--show-sign] [--no-leading-zeros]\n"
                 "                        [--hide-hours] [--subtract-one-frame]\n"
                 "                        (TEXT | --frames N | --seconds S | --ticks T)\n"
                 "                        [--step H:M:S:F] [--step-feet FEET:FRAMES]\n"
                 "  F: a code (100-112, 200, 201) or a name: 24 25 2997df 2997nd 30 50\n"
                 "     5994df 5994nd 60 frames 23976 feet40 feet16 own ms (default 2997df)\n"
                 "  R: frames per second, 1 to 254016000000 (a frame lasts at least one\n"
                 "     tick), or 2997, 5994, 23976, ntsc, ntschd, pal; the formats frames,\n"
                 "     feet40, feet16 and own count at R (default 24)\n"
                 "  --frames counts at the format's rate. Times stay within 100 hours either\n"
                 "  way: --seconds -360000 to 360000, --ticks -91445760000000000 to\n"
                 "  91445760000000000, --frames as many frames as that is. --step and\n"
                 "  --step-feet fields are -1000000 to 1000000. Rejected text exits with 1.\n"
                 "  Example: tovtool timecode --format 2997df '00:01:00;02'",
                 RunTimecode});

}  // namespace
