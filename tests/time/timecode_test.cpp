// Timecode: text, fields, parsers, stepping.
#include <gtest/gtest.h>

#include <string>

#include "basalt/utf.h"
#include "tovfoundation/time.h"

namespace {

using namespace basalt::literals;
using TOV::FrameRate;
using TOV::Time;
using TOV::Timecode;
namespace FR = TOV::FrameRates;

std::string Text(const Timecode& tc) { return basalt::UTF16to8(tc.GetString()); }

Time Parse(const std::string& text, FrameRate rate, std::uint32_t format, bool addOne = false) {
  return Timecode::StringToTime(basalt::UTF8to16(text), rate, format, addOne);
}

Timecode::Style MakeStyle(std::uint32_t showHours, bool noLeadingZeros, bool showSign,
                          bool subtractOneFrame) {
  Timecode::Style style;
  style.showHours = showHours;
  style.noLeadingZeros = noLeadingZeros;
  style.showSign = showSign;
  style.subtractOneFrame = subtractOneFrame;
  return style;
}

const FrameRate kNtsc = FR::kFrameRate_VideoNTSC;

TEST(Timecode, DefaultShowsZeroDropFrame) {
  const Timecode tc;
  EXPECT_EQ(Text(tc), "00;00;00;00");
  EXPECT_EQ(tc.GetTime(), TOV::kTime_Zero);
  EXPECT_EQ(tc.GetFrameRate(), kNtsc);
  EXPECT_EQ(tc.GetFormat(), TOV::kTimecodeFormat_2997DropFrame);
  const Timecode::Style style = tc.GetStyle();
  EXPECT_EQ(style.showHours, 1u);
  EXPECT_FALSE(style.noLeadingZeros);
  EXPECT_FALSE(style.showSign);
  EXPECT_FALSE(style.subtractOneFrame);
}

TEST(Timecode, HeaderExampleSteppingBackOverADroppedSecond) {
  Timecode tc;
  tc.SetTime(u"00;01;00;02"_u16);
  EXPECT_EQ(tc.GetTime(), Time(1800, kNtsc));
  tc.IncrementHMSF(0, 0, 0, -1);
  EXPECT_EQ(Text(tc), "00;00;59;29");
  EXPECT_EQ(tc.GetTime(), Time(1799, kNtsc));
  Timecode example(Time(3.5), kNtsc, TOV::kTimecodeFormat_2997DropFrame);
  EXPECT_EQ(Text(example), "00;00;03;14");
}

TEST(Timecode, DropFrameTextOfMinuteStartReadsTheSameAsFrameTwo) {
  EXPECT_EQ(Parse("00;01;00;00", kNtsc, 102), Parse("00;01;00;02", kNtsc, 102));
  EXPECT_EQ(Parse("00;01;00;02", kNtsc, 102), Time(1800, kNtsc));
  EXPECT_EQ(Parse("00;10;00;00", kNtsc, 102), Time(17982, kNtsc));
  // Frame 1 of a dropped second is the last frame of the previous minute.
  EXPECT_EQ(Parse("00;01;00;01", kNtsc, 102), Time(1799, kNtsc));
}

TEST(Timecode, DropFrameAroundTheFirstDroppedSecond) {
  Timecode tc(Time(1799, kNtsc), kNtsc, 102);
  EXPECT_EQ(Text(tc), "00;00;59;29");
  tc.SetTime(Time(1800, kNtsc));
  EXPECT_EQ(Text(tc), "00;01;00;02");
  tc.SetTime(Time(17982, kNtsc));
  EXPECT_EQ(Text(tc), "00;10;00;00");
}

TEST(Timecode, SingleGroupIsSplitFromTheRight) {
  const FrameRate film = FR::kFrameRate_Film24;
  EXPECT_EQ(Parse("1000", film, 100), Time(10.0));
  Timecode tc(Parse("1000", film, 100), film, 100);
  EXPECT_EQ(Text(tc), "00:00:10:00");
  EXPECT_EQ(Parse("25", film, 100), Time(25, film));
  tc.SetTime(Parse("25", film, 100));
  EXPECT_EQ(Text(tc), "00:00:01:01");
  EXPECT_EQ(Parse("1020304", film, 100), Parse("01:02:03:04", film, 100));
}

TEST(Timecode, SingleGroupFrameDigitsFollowTheRate) {
  // Above 100 fps three frame digits, above 1000 four, above 10000 five.
  EXPECT_EQ(Parse("999", FrameRate(200.0), 200), Time(999, FrameRate(200.0)));
  EXPECT_EQ(Parse("1000", FrameRate(200.0), 200), Time(1.0));
  EXPECT_EQ(Parse("1050", FrameRate(200.0), 200), Time(1.25));
  EXPECT_EQ(Parse("10500", FrameRate(2000.0), 200), Time(1.25));
  EXPECT_EQ(Parse("105000", FrameRate(20000.0), 200), Time(1.25));
  EXPECT_EQ(Parse("100", FR::kFrameRate_Video100, 200), Time(1.0));
}

TEST(Timecode, NegativeTimeMirrorsOnlyTheHoursWithoutSign) {
  Timecode tc(Time(-1.0), FR::kFrameRate_VideoPAL, 101);
  EXPECT_EQ(Text(tc), "23:00:01:00");
  tc.SetStyle(MakeStyle(1, false, true, false));
  EXPECT_EQ(Text(tc), "-00:00:01:00");
  Timecode more(Time(-3725.0), FR::kFrameRate_VideoPAL, 101);
  EXPECT_EQ(Text(more), "22:02:05:00");
}

TEST(Timecode, FeetAndFrames) {
  const FrameRate film = FR::kFrameRate_Film24;
  Timecode tc(Time(17, film), film, 112);
  EXPECT_EQ(Text(tc), "1+01");
  EXPECT_EQ(Parse("1+01", film, 112), Time(17, film));
  EXPECT_EQ(Parse("1+01", film, 111), Time(41, film));
  Timecode forty(Time(41, film), film, 111);
  EXPECT_EQ(Text(forty), "1+01");
  forty.SetTime(Time(-41, film));
  EXPECT_EQ(Text(forty), "-1+01");
  forty.SetTime(Time(415, film));
  EXPECT_EQ(Text(forty), "10+15");
}

TEST(Timecode, FeetAndFramesTextForms) {
  const FrameRate film = FR::kFrameRate_Film24;
  struct Row {
    const char* text;
    std::int64_t frames;  // at 40 per foot; INT64_MIN for rejected
  };
  constexpr std::int64_t kRejected = std::numeric_limits<std::int64_t>::min();
  const Row rows[] = {
      {"7", 7},
      {"07", 7},
      {"123", 1 * 40 + 23},
      {"12345678", 123456 * 40 + 78},
      {"123456789", kRejected},
      {"-1+01", -41},
      {"+1+01", 41},
      {"1+", 40},
      {"+5", 5},
      {"1.05", 45},
      {"1:05", 45},
      {"1;05", 45},
      {":", 0},
      {"1++2", kRejected},
      {"1+2+3", kRejected},
      {"1+2+", kRejected},
      {"1a", kRejected},
      {"-", kRejected},
      {"+", kRejected},
      {"--1", kRejected},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    const Time expected = row.frames == kRejected ? TOV::kTime_Invalid : Time(row.frames, film);
    EXPECT_EQ(Parse(row.text, film, 111), expected);
  }
}

TEST(Timecode, RejectedTextGivesInvalid) {
  for (const char* text : {"12:3a", "1::2", "1:2:3:4:5", "-", "+", ":", "-:", "1:2:3:4:", "a",
                           "1 2", "--1", "1-2", "1+2"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Parse(text, FR::kFrameRate_VideoPAL, 101), TOV::kTime_Invalid);
  }
}

TEST(Timecode, EmptyTextIsZero) {
  EXPECT_EQ(Timecode::StringToTime(UTF16String(), kNtsc, 102, false), TOV::kTime_Zero);
  EXPECT_EQ(Timecode::StringToTime(UTF16String(), kNtsc, 111, true), TOV::kTime_Zero);
  Timecode tc(Time(5.0), FR::kFrameRate_VideoPAL, 101);
  tc.SetTime(UTF16String());
  EXPECT_EQ(tc.GetTime(), TOV::kTime_Zero);
}

TEST(Timecode, GroupsAlignFromTheRight) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  EXPECT_EQ(Parse("1:02", pal, 101), Time(27, pal));
  EXPECT_EQ(Parse("1:00:00", pal, 101), Time(60.0));
  EXPECT_EQ(Parse("1:2:3:4", pal, 101), Time(3723 * 25 + 4, pal));
  EXPECT_EQ(Parse("1:2:3:", pal, 101), Time(3723.0));
  EXPECT_EQ(Parse("-0:0:1:0", pal, 101), Time(-1.0));
  EXPECT_EQ(Parse("+0:0:1:0", pal, 101), Time(1.0));
}

TEST(Timecode, LeadingSeparatorMakesAFrameCount) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  EXPECT_EQ(Parse(":1000", pal, 101), Time(1000, pal));
  EXPECT_EQ(Parse("-.1000", pal, 101), Time(-1000, pal));
  EXPECT_EQ(Parse(";5", pal, 101, true), Time(6, pal));
  EXPECT_EQ(Parse("::5", pal, 101), TOV::kTime_Invalid);
  EXPECT_EQ(Parse(":1:2", pal, 101), Parse("1:2", pal, 101));
}

TEST(Timecode, FrameCountFormat) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  EXPECT_EQ(Parse("1234", pal, 109), Time(1234, pal));
  EXPECT_EQ(Parse("-12", pal, 109, true), Time(-13, pal));
  EXPECT_EQ(Parse("1:2", pal, 109), TOV::kTime_Invalid);
  EXPECT_EQ(Parse(":12", pal, 109), Time(12, pal));
  Timecode tc(Time(1234, pal), pal, 109);
  EXPECT_EQ(Text(tc), "1234");
  tc.SetTime(Time(-1234, pal));
  EXPECT_EQ(Text(tc), "-1234");
  tc.SetStyle(MakeStyle(1, false, true, false));
  EXPECT_EQ(Text(tc), "-1234");
  tc.SetTime(Time(5, pal));
  EXPECT_EQ(Text(tc), "+5");
}

TEST(Timecode, FramesAboveTheRateCarryIntoSeconds) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  // A frames value equal to a whole rate is kept as it is.
  EXPECT_EQ(Parse("0:0:0:25", pal, 101), Time(25, pal));
  EXPECT_EQ(Parse("0:0:0:26", pal, 101), Time(26, pal));
  EXPECT_EQ(Parse("0:0:0:251", pal, 101), Time(251, pal));
  // At 29.97 each carry takes 30 frames, and 30 exceeds 29.97.
  EXPECT_EQ(Parse("00:00:00:30", kNtsc, 103), Time(30, kNtsc));
  EXPECT_EQ(Parse("00:00:00:29", kNtsc, 103), Time(29, kNtsc));
  // Seconds and minutes above 59 carry; hours wrap modulo 24.
  EXPECT_EQ(Parse("0:0:75:0", pal, 101), Time(75.0));
  EXPECT_EQ(Parse("0:61:0:0", pal, 101), Time(3660.0));
  EXPECT_EQ(Parse("25:0:0:0", pal, 101), Time(3600.0));
  EXPECT_EQ(Parse("24:0:0:0", pal, 101), Time(0.0));
}

TEST(Timecode, HostileTextNeverCrashes) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  const std::string thirty(30, '9');
  // Digit groups of any length wrap in unsigned 32-bit arithmetic.
  const std::uint32_t wrapped = [] {
    std::uint32_t v = 0;
    for (int i = 0; i < 30; ++i) v = v * 10u + 9u;
    return v;
  }();
  EXPECT_EQ(Parse(":" + thirty, pal, 101), Time(static_cast<std::int64_t>(wrapped), pal));
  EXPECT_EQ(Parse(thirty, pal, 109), Time(static_cast<std::int64_t>(wrapped), pal));
  EXPECT_NE(Parse(thirty + ":" + thirty + ":" + thirty + ":" + thirty, pal, 101),
            TOV::kTime_Invalid);
  EXPECT_NE(Parse(thirty + "+" + thirty, pal, 111), TOV::kTime_Invalid);
  EXPECT_EQ(Parse(thirty, pal, 111), TOV::kTime_Invalid);

  for (std::uint32_t format : {100u, 101u, 102u, 106u, 109u, 111u, 112u, 200u, 201u, 999u}) {
    SCOPED_TRACE(format);
    for (const UTF16String& text :
         {u"-"_u16, u"+"_u16, u"--"_u16, u"+-"_u16, u"::::"_u16, u":;."_u16, u"+++"_u16,
          u"1\u00e9"_u16, u"\u0661\u0662"_u16, u"\xd800"_u16, UTF16String{u'1', 0, u'2'},
          UTF16String(1, 0), u"１２"_u16}) {
      EXPECT_EQ(Timecode::StringToTime(text, pal, format, false), TOV::kTime_Invalid);
    }
  }
  // Non-ASCII and embedded NUL inside otherwise valid text.
  EXPECT_EQ(Timecode::StringToTime(UTF16String{u'1', u':', 0, u'2'}, pal, 101, false),
            TOV::kTime_Invalid);
}

TEST(Timecode, ParsingWithoutARateNeverHangs) {
  // The sentinel and negative rates leave the frames uncarried.
  EXPECT_EQ(Parse("0:0:0:100", FrameRate(), 200), Time(100, FrameRate()));
  EXPECT_EQ(Parse("0:0:1:100", FrameRate(-25.0), 200).GetTicks(),
            Time(100 - 25, FrameRate(-25.0)).GetTicks());
  // Just above half a frame per second every frame carries one second:
  // 42:94:96:72:95 ⇒ 95 frames into seconds ⇒ 23:38:47:00 ⇒ trunc(0.6 × 85127) frames.
  EXPECT_EQ(Parse("4294967295", FrameRate(0.6), 200), Time(51076, FrameRate(0.6)));
  Timecode tc(Time(), FrameRate(), 200);
  tc.SetTime(u"1:2:3:4"_u16);  // 4 frames of INT64_MAX ticks: -4 ticks
  EXPECT_EQ(tc.GetTime().GetTicks(), -4);
  EXPECT_EQ(Text(tc), "23:00:00:0");
  Timecode unknown(Time(5.0), FR::kFrameRate_VideoPAL, 999);
  EXPECT_EQ(Text(unknown), "00:00:00:0");
  unknown.IncrementHMSF(0, 0, 0, 7);
  EXPECT_EQ(Text(unknown), "00:00:00:7");
}

TEST(Timecode, SubtractOneFrameShowsThePreviousFrame) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  const Timecode::Style style = MakeStyle(1, false, false, true);
  Timecode tc(Time(1.0), pal, 101, style);
  EXPECT_EQ(tc.GetTime(), Time(1.0));
  EXPECT_EQ(Text(tc), "00:00:00:24");
  tc.SetTime(Time(2.0));
  EXPECT_EQ(tc.GetTime(), Time(2.0));
  EXPECT_EQ(Text(tc), "00:00:01:24");
  tc.SetTime(u"00:00:03:00"_u16);
  EXPECT_EQ(tc.GetTime(), Time(3.0) + Time(1, pal));
  EXPECT_EQ(Text(tc), "00:00:03:00");
  tc.SetTime(u"bad"_u16);
  EXPECT_EQ(tc.GetTime(), TOV::kTime_Invalid);
}

TEST(Timecode, SubtractOneFrameMovesWithTheRateOnSetFormat) {
  const Timecode::Style style = MakeStyle(1, false, false, true);
  Timecode tc(Time(1.0), FR::kFrameRate_VideoPAL, 101, style);
  tc.SetFormat(100, FR::kFrameRate_Film24);
  EXPECT_EQ(tc.GetTime(), Time(1.0));
  EXPECT_EQ(Text(tc), "00:00:00:23");
  EXPECT_EQ(tc.GetFrameRate(), FR::kFrameRate_Film24);
  EXPECT_EQ(tc.GetFormat(), 100u);
}

TEST(Timecode, SetStyleNeverShiftsTheStoredTime) {
  Timecode tc(Time(1.0), FR::kFrameRate_VideoPAL, 101);
  tc.SetStyle(MakeStyle(1, false, false, true));
  EXPECT_EQ(Text(tc), "00:00:01:00");
  EXPECT_EQ(tc.GetTime(), Time(1.0) + Time(1, FR::kFrameRate_VideoPAL));
}

TEST(Timecode, CopiesCarryThePublicTime) {
  const Timecode::Style style = MakeStyle(1, false, false, true);
  const Timecode source(Time(1.0), FR::kFrameRate_VideoPAL, 101, style);
  const Timecode copy(source);
  EXPECT_EQ(copy.GetTime(), Time(1.0));
  EXPECT_EQ(Text(copy), "00:00:00:24");
  Timecode assigned;
  assigned = source;
  EXPECT_EQ(assigned.GetTime(), Time(1.0));
  EXPECT_EQ(assigned.GetFormat(), 101u);
  EXPECT_EQ(Text(assigned), "00:00:00:24");
  assigned = assigned;
  EXPECT_EQ(assigned.GetTime(), Time(1.0));
}

TEST(Timecode, StylePaddingAndHours) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  const Time t = Time(3723.0) + Time(4, pal);
  Timecode tc(t, pal, 101);
  EXPECT_EQ(Text(tc), "01:02:03:04");
  tc.SetStyle(MakeStyle(1, true, false, false));
  EXPECT_EQ(Text(tc), "1:02:03:4");
  tc.SetStyle(MakeStyle(0, false, false, false));
  EXPECT_EQ(Text(tc), "02:03:04");
  tc.SetStyle(MakeStyle(2, false, true, false));
  EXPECT_EQ(Text(tc), "+02:03:04");
  Timecode ms(Time(1.5), FR::kFrameRate_VideoPAL, 201);
  EXPECT_EQ(Text(ms), "00:00:01.500");
  ms.SetTime(Time(0.007));
  EXPECT_EQ(Text(ms), "00:00:00.007");
  Timecode audio(Time(1.0) + Time(7, FR::kFrameRate_Audio48000), FR::kFrameRate_Audio48000, 200);
  EXPECT_EQ(Text(audio), "00:00:01:00007");
  Timecode ten(Time(0.5), FrameRate(10.0), 200);
  EXPECT_EQ(Text(ten), "00:00:00:5");
}

TEST(Timecode, HoursAreShownModulo24ButNotReduced) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  Timecode tc(Time(25 * 3600.0), pal, 101);
  EXPECT_EQ(Text(tc), "01:00:00:00");
  Timecode invalid(TOV::kTime_Invalid, kNtsc, 102);
  EXPECT_EQ(Text(invalid), "08;06;40;11");
}

TEST(Timecode, IncrementCarriesBetweenFields) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  Timecode tc(Time(59.0) + Time(24, pal), pal, 101);
  tc.IncrementHMSF(0, 0, 0, 1);
  EXPECT_EQ(Text(tc), "00:01:00:00");
  EXPECT_EQ(tc.GetTime(), Time(60.0));
  tc.IncrementHMSF(1, 59, 0, 0);
  EXPECT_EQ(Text(tc), "02:00:00:00");
  tc.IncrementHMSF(0, 0, -1, 0);
  EXPECT_EQ(Text(tc), "01:59:59:00");
  tc.IncrementHMSF(0, 0, 0, -26);
  EXPECT_EQ(Text(tc), "01:59:57:24");
  EXPECT_EQ(tc.GetTime(), Time(7197.0) + Time(24, pal));
}

TEST(Timecode, IncrementBelowZeroTurnsNegative) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  Timecode tc(Time(), pal, 101, MakeStyle(1, false, true, false));
  tc.IncrementHMSF(0, 0, 0, -1);
  EXPECT_EQ(tc.GetTime(), Time(-1, pal));
  EXPECT_EQ(Text(tc), "-00:00:00:01");
  // On a negative time a positive step moves toward zero.
  tc.IncrementHMSF(0, 0, 0, 1);
  EXPECT_EQ(tc.GetTime(), Time());
}

TEST(Timecode, IncrementClampsHoursToADay) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  Timecode tc(Time(3600.0), pal, 101);
  tc.IncrementHMSF(30, 0, 0, 0);
  EXPECT_EQ(tc.GetTime(), Time(86400.0));
  EXPECT_EQ(Text(tc), "00:00:00:00");
  Timecode down(Time(-3600.0), pal, 101, MakeStyle(1, false, true, false));
  down.IncrementHMSF(30, 0, 0, 0);
  EXPECT_EQ(down.GetTime(), Time(-86400.0));
  EXPECT_EQ(Text(down), "-00:00:00:00");
}

TEST(Timecode, DropFrameIncrementKeepsFramesTwoAndThreeAt5994) {
  const FrameRate hd = FR::kFrameRate_VideoNTSC_HD;
  Timecode tc(Time(3599, hd), hd, 106);
  EXPECT_EQ(Text(tc), "00;00;59;59");
  tc.IncrementHMSF(0, 0, 0, 1);
  EXPECT_EQ(Text(tc), "00;01;00;04");
  EXPECT_EQ(tc.GetTime(), Time(3600, hd));
  // Frame number 2 of a dropped second at 59.94 survives a step.
  tc.IncrementHMSF(0, 0, 0, -2);
  EXPECT_EQ(Text(tc), "00;01;00;02");
  EXPECT_EQ(tc.GetTime(), Time(3598, hd));
  tc.IncrementHMSF(0, 0, 0, -1);
  EXPECT_EQ(Text(tc), "00;00;59;59");
}

TEST(Timecode, DropFrameIncrementOverTenMinutes) {
  Timecode tc(Time(17981, kNtsc), kNtsc, 102);
  EXPECT_EQ(Text(tc), "00;09;59;29");
  tc.IncrementHMSF(0, 0, 0, 1);
  EXPECT_EQ(Text(tc), "00;10;00;00");
  tc.IncrementHMSF(0, 1, 0, 0);
  EXPECT_EQ(Text(tc), "00;11;00;02");
  EXPECT_EQ(tc.GetTime(), Time(17982 + 1800, kNtsc));
}

TEST(Timecode, IncrementFeetFramesLeavesFieldsStale) {
  const FrameRate film = FR::kFrameRate_Film24;
  Timecode tc(Time(17, film), film, 112);
  tc.IncrementFeetFrames(2, 3);
  EXPECT_EQ(tc.GetTime(), Time(17 + 35, film));
  EXPECT_EQ(Text(tc), "3+04");
  Timecode hms(Time(1.0), FR::kFrameRate_VideoPAL, 101);
  hms.IncrementFeetFrames(1, 0);
  EXPECT_EQ(hms.GetTime(), Time(1.0) + Time(40, FR::kFrameRate_VideoPAL));
  EXPECT_EQ(Text(hms), "00:00:01:00");  // fields untouched
  hms.SetFormat(101, FR::kFrameRate_VideoPAL);
  EXPECT_EQ(Text(hms), "00:00:02:15");
}

TEST(Timecode, IncrementFeetFramesDoesNotRefreshTheSign) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  Timecode tc(Time(1, pal), pal, 101);
  tc.IncrementFeetFrames(0, -2);
  EXPECT_EQ(tc.GetTime(), Time(-1, pal));
  EXPECT_EQ(Text(tc), "23:00:00:01");  // old fields, new sign mirrors the hours
}

TEST(Timecode, OwnRateFormatDoesNotRoundTripAt2997) {
  const FrameRate rate(29.97);
  Timecode tc(Time(986, rate), rate, 200);
  // Fields are counted with the truncated rate 29 ...
  EXPECT_EQ(Text(tc), "00:00:34:00");
  // ... and rebuilt with 29.97: trunc(29.97 × 34) = 1018 frames.
  EXPECT_EQ(Parse("00:00:34:00", rate, 200), Time(1018, rate));
}

TEST(Timecode, MoreThanADayOfFramesWrapsTheWrongWayOnPurpose) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  // Above a day the time folds into (0, 1 day].
  Timecode up(Time(100000.0), pal, 109);
  up.IncrementHMSF(0, 0, 0, 0);
  EXPECT_EQ(up.GetTime(), Time(100000.0 - 86400.0));
  Timecode exact(Time(2 * 86400.0), pal, 109);
  exact.IncrementHMSF(0, 0, 0, 0);
  EXPECT_EQ(exact.GetTime(), Time(86400.0));
  // Below minus a day it adds minus a day until the ticks wrap around.
  Timecode down(Time(), pal, 109);
  down.IncrementHMSF(0, 0, 0, -2160001);  // one frame more than a day back
  const std::int64_t day = Time(86400.0).GetTicks();
  std::uint64_t expected = static_cast<std::uint64_t>(Time(-2160001, pal).GetTicks());
  while (static_cast<std::int64_t>(expected) < -day) expected -= static_cast<std::uint64_t>(day);
  EXPECT_EQ(down.GetTime().GetTicks(), static_cast<std::int64_t>(expected));
  EXPECT_GT(down.GetTime(), Time(86400.0));
  Timecode lessThanADay(Time(), pal, 109);
  lessThanADay.IncrementHMSF(0, 0, 0, -100);
  EXPECT_EQ(lessThanADay.GetTime(), Time(-100, pal));
}

TEST(Timecode, FormatRatesDriveTheFrameBase) {
  struct Row {
    std::uint32_t format;
    FrameRate given;
    std::int64_t frames;
    const char* text;
  };
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  const Row rows[] = {
      {100, pal, 24 * 61 + 5, "00:01:01:05"}, {101, pal, 25 * 61 + 5, "00:01:01:05"},
      {103, pal, 30 * 61 + 5, "00:01:01:05"}, {104, pal, 30 * 61 + 5, "00:01:01:05"},
      {105, pal, 50 * 61 + 5, "00:01:01:05"}, {107, pal, 60 * 61 + 5, "00:01:01:05"},
      {108, pal, 60 * 61 + 5, "00:01:01:05"}, {110, pal, 24 * 61 + 5, "00:01:01:05"},
  };
  const FrameRate rates[] = {FR::kFrameRate_Film24,      FR::kFrameRate_VideoPAL,
                             FR::kFrameRate_VideoNTSC,   FR::kFrameRate_Video30,
                             FR::kFrameRate_VideoPAL_HD, FR::kFrameRate_VideoNTSC_HD,
                             FR::kFrameRate_Video60,     FR::kFrameRate_23976};
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    SCOPED_TRACE(rows[i].format);
    Timecode tc(Time(rows[i].frames, rates[i]), rows[i].given, rows[i].format);
    EXPECT_EQ(Text(tc), rows[i].text);
    EXPECT_EQ(Parse(rows[i].text, rows[i].given, rows[i].format), Time(rows[i].frames, rates[i]));
  }
}

TEST(Timecode, AddOneFrameFollowsTheSignForFieldsAndPrecedesItForCounts) {
  const FrameRate pal = FR::kFrameRate_VideoPAL;
  EXPECT_EQ(Parse("-00:00:01:00", pal, 101, true), Time(-24, pal));
  EXPECT_EQ(Parse("00:00:01:00", pal, 101, true), Time(26, pal));
  EXPECT_EQ(Parse("-25", pal, 109, true), Time(-26, pal));
  EXPECT_EQ(Parse("-:25", pal, 101, true), Time(-26, pal));
  EXPECT_EQ(Parse("-1+01", pal, 111, true), Time(-42, pal));
  EXPECT_EQ(Parse("00:00:00.500", pal, 201, true), Time(501, FrameRate(1000.0)));
}

}  // namespace
