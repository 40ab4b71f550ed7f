// The Win32 backend's process, thread, clock, environment and error queries
// give the system's own answers.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <thread>

#include "basalt/strings.h"
#include "basalt/utf.h"
#include "platform/error.h"
#include "platform/path.h"
#include "platform/system.h"

using namespace basalt::literals;
namespace platform = tovimpl::platform;

namespace {

// Sets an environment variable for the test's duration.
class ScopedEnv {
 public:
  ScopedEnv(const wchar_t* name, const wchar_t* value) : mName(name) {
    ::SetEnvironmentVariableW(name, value);
  }
  ~ScopedEnv() { ::SetEnvironmentVariableW(mName.c_str(), nullptr); }

 private:
  std::wstring mName;
};

}  // namespace

TEST(Win32LastError, IsTheThreadsSystemSlot) {
  platform::SetLastError(platform::kErrorSharingViolation);
  EXPECT_EQ(::GetLastError(), 32u);
  ::SetLastError(ERROR_ALREADY_EXISTS);
  EXPECT_EQ(platform::GetLastError(), platform::kErrorAlreadyExists);
}

TEST(Win32LastError, LibraryCodesAreTheSystemsCodes) {
  EXPECT_EQ(platform::kErrorFileNotFound, static_cast<std::uint32_t>(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(platform::kErrorPathNotFound, static_cast<std::uint32_t>(ERROR_PATH_NOT_FOUND));
  EXPECT_EQ(platform::kErrorAccessDenied, static_cast<std::uint32_t>(ERROR_ACCESS_DENIED));
  EXPECT_EQ(platform::kErrorSharingViolation, static_cast<std::uint32_t>(ERROR_SHARING_VIOLATION));
  EXPECT_EQ(platform::kErrorFileExists, static_cast<std::uint32_t>(ERROR_FILE_EXISTS));
  EXPECT_EQ(platform::kErrorAlreadyExists, static_cast<std::uint32_t>(ERROR_ALREADY_EXISTS));
  EXPECT_EQ(platform::kErrorDiskFull, static_cast<std::uint32_t>(ERROR_DISK_FULL));
  EXPECT_EQ(platform::kErrorEnvVarNotFound, static_cast<std::uint32_t>(ERROR_ENVVAR_NOT_FOUND));
  EXPECT_EQ(platform::kErrorFilenameExcedRange,
            static_cast<std::uint32_t>(ERROR_FILENAME_EXCED_RANGE));
  EXPECT_EQ(platform::kErrorDirNotEmpty, static_cast<std::uint32_t>(ERROR_DIR_NOT_EMPTY));
  EXPECT_EQ(platform::kErrorNoMoreFiles, static_cast<std::uint32_t>(ERROR_NO_MORE_FILES));
  EXPECT_EQ(platform::kErrorResourceTypeNotFound,
            static_cast<std::uint32_t>(ERROR_RESOURCE_TYPE_NOT_FOUND));
  EXPECT_EQ(platform::kErrorModNotFound, static_cast<std::uint32_t>(ERROR_MOD_NOT_FOUND));
  EXPECT_EQ(platform::kErrorProcNotFound, static_cast<std::uint32_t>(ERROR_PROC_NOT_FOUND));
}

TEST(Win32System, IdentifiersAreTheSystems) {
  EXPECT_EQ(platform::CurrentProcessId(), static_cast<std::uint32_t>(::GetCurrentProcessId()));
  EXPECT_EQ(platform::CurrentThreadId(), static_cast<std::uint32_t>(::GetCurrentThreadId()));
  std::uint32_t other = 0;
  std::uint32_t otherSystem = 0;
  std::thread([&] {
    other = platform::CurrentThreadId();
    otherSystem = static_cast<std::uint32_t>(::GetCurrentThreadId());
  }).join();
  EXPECT_EQ(other, otherSystem);
  EXPECT_NE(other, platform::CurrentThreadId());
}

TEST(Win32System, TickCountFollowsGetTickCount) {
  const std::uint32_t before = static_cast<std::uint32_t>(::GetTickCount());
  const std::uint32_t ours = platform::TickCountMs();
  const std::uint32_t after = static_cast<std::uint32_t>(::GetTickCount());
  // Unsigned differences stay right across the 49.7-day wrap.
  EXPECT_LE(ours - before, after - before);
}

TEST(Win32System, GetEnvVarMissingCarriesError203) {
  ::SetEnvironmentVariableW(L"TOV_WIN32_TEST_UNSET", nullptr);
  const auto value = platform::GetEnvVar(u"TOV_WIN32_TEST_UNSET"_u16);
  EXPECT_FALSE(value);
  EXPECT_EQ(value.Error(), platform::kErrorEnvVarNotFound);
  EXPECT_EQ(value.Error(), static_cast<std::uint32_t>(ERROR_ENVVAR_NOT_FOUND));
}

TEST(Win32System, GetEnvVarEmptyValueIsEmptyText) {
  ScopedEnv env(L"TOV_WIN32_TEST_EMPTY", L"");
  const auto value = platform::GetEnvVar(u"TOV_WIN32_TEST_EMPTY"_u16);
  ASSERT_TRUE(value);
  EXPECT_TRUE(value->empty());
}

TEST(Win32System, GetEnvVarReadsLongAndNonAsciiValues) {
  const std::wstring longValue(1000, L'x');
  {
    ScopedEnv env(L"TOV_WIN32_TEST_LONG", longValue.c_str());
    const auto value = platform::GetEnvVar(u"TOV_WIN32_TEST_LONG"_u16);
    ASSERT_TRUE(value);
    EXPECT_EQ(value->size(), 1000u);
    EXPECT_EQ(*value, UTF16String(1000, u'x'));
  }
  {
    ScopedEnv env(L"TOV_WIN32_TEST_WIDE", L"C:\\Gr\u00FC\u00DFe\\\u4E16\u754C");
    const auto value = platform::GetEnvVar(u"TOV_WIN32_TEST_WIDE"_u16);
    ASSERT_TRUE(value);
    EXPECT_EQ(*value, u"C:\\Grüße\\世界"_u16);
  }
}

TEST(Win32Path, SpellingIsTheIdentityBothWays) {
  for (const UTF16String& path : {u""_u16, u"C:\\a\\b.txt"_u16, u"\\\\?\\UNC\\srv\\share\\x"_u16,
                                  u"\\\\?\\C:\\x"_u16, u"a/b\\c"_u16, u"\\tmp\\a"_u16}) {
    SCOPED_TRACE(basalt::UTF16to8(path));
    EXPECT_EQ(platform::ToNativeSpelling(path), path);
    EXPECT_EQ(platform::FromNativeSpelling(path), path);
  }
}
