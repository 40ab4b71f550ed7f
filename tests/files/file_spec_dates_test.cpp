// File specs: modification times on either side of the calendar's March
// pivot, and a write stream in a missing folder.
#include <gtest/gtest.h>

#include "common/file_times.h"
#include "files/files_support.h"
#include "tovfoundation/files.h"
#include "tovfoundation/streams.h"

using Halyard::FileUtils::CFileSpec;
using tovtest::TempTree;

namespace {

Halyard::VDateTime ModificationOf(const TempTree& temp, const char* name,
                                  std::int64_t unixSeconds) {
  tovtest::WriteBytes(temp.NativeOf(name), tovtest::Bytes{1});
  EXPECT_TRUE(tovtest::SetModificationTime(temp.NativeOf(name), unixSeconds, 0));
  Halyard::VDateTime when{};
  CFileSpec spec(temp.Lib(name));
  EXPECT_EQ(spec.GetModificationTime(&when), 0u);
  return when;
}

TEST(FileSpecDates, LeapDayInFebruaryIsReportedAsTheTwentyNinth) {
  TempTree temp("spec-dates");
  const Halyard::VDateTime when =
      ModificationOf(temp, "leap.bin", 1709210096);  // 2024-02-29 12:34:56
  EXPECT_EQ(when.year, 2024);
  EXPECT_EQ(when.month, 2);
  EXPECT_EQ(when.day, 29);
  EXPECT_EQ(when.hour, 12);
  EXPECT_EQ(when.minute, 34);
  EXPECT_EQ(when.second, 56);
  EXPECT_EQ(when.kind, 2);
}

TEST(FileSpecDates, LastSecondOfTheYearStaysInDecember) {
  TempTree temp("spec-dates");
  const Halyard::VDateTime when =
      ModificationOf(temp, "eve.bin", 1704067199);  // 2023-12-31 23:59:59
  EXPECT_EQ(when.year, 2023);
  EXPECT_EQ(when.month, 12);
  EXPECT_EQ(when.day, 31);
  EXPECT_EQ(when.hour, 23);
  EXPECT_EQ(when.minute, 59);
  EXPECT_EQ(when.second, 59);
}

TEST(FileSpecDates, WriteStreamInAMissingFolderIsNull) {
  TempTree temp("spec-dates");
  CFileSpec spec(temp.Lib("absent/out.bin"));
  EXPECT_EQ(spec.OpenWriteStream(Halyard::kHaldLittleEndian), nullptr);
  EXPECT_FALSE(tovtest::Exists(temp.NativeOf("absent")));
}

}  // namespace
