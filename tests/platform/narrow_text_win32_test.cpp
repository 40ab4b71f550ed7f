// Narrow text at the OS boundary on Windows: narrow paths and module names
// are in the ANSI code page, as the system's narrow calls (PathFileExistsA,
// PathIsDirectoryA, LoadLibraryExA, FindFirstFileA) take them. Each check
// makes a name with a character outside ASCII and compares the library's
// answer with the system's own.
//
// The library's headers come first: the system's macros would rename their
// functions.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "platform/text.h"
#include "tovfoundation/files.h"
#include "tovfoundation/foundation.h"

// The backend's own way in to the system's headers, then the path API, which
// needs <windows.h> first.
// clang-format off
#include "platform/win32/win32_support.h"
#include <shlwapi.h>
// clang-format on

namespace fs = std::filesystem;
namespace platform = tovimpl::platform;

namespace {

// `text` in the ANSI code page, or nothing when the code page lacks one of
// its characters.
bool ToAnsi(const std::wstring& text, std::string* out) {
  BOOL usedDefault = FALSE;
  const int bytes =
      ::WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, text.c_str(),
                            static_cast<int>(text.size()), nullptr, 0, nullptr, &usedDefault);
  if (bytes <= 0 || usedDefault) return false;
  out->assign(static_cast<std::size_t>(bytes), '\0');
  ::WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, text.c_str(), static_cast<int>(text.size()),
                        out->data(), bytes, nullptr, &usedDefault);
  return !usedDefault;
}

// A fresh folder under the system's temporary folder, removed afterwards,
// with its path in the ANSI code page.
class AnsiFolder : public ::testing::Test {
 protected:
  void SetUp() override {
    RecordProperty("AnsiCodePage", static_cast<int>(::GetACP()));
    std::error_code error;
    mFolder = fs::temp_directory_path(error) /
              (L"tovplatform-narrow-" + std::to_wstring(::GetCurrentProcessId()) + L"-" +
               std::to_wstring(::GetTickCount()));
    ASSERT_TRUE(fs::create_directories(mFolder, error)) << error.message();
    if (!ToAnsi(mFolder.wstring(), &mAnsi)) {
      GTEST_SKIP() << "temporary folder not in the code page";
    }
    // "ü" (U+00FC) is 0xFC in code page 1252; other code pages may lack it.
    if (!ToAnsi(L"\u00FC", &mUmlaut)) {
      GTEST_SKIP() << "code page " << ::GetACP() << " has no \u00FC";
    }
    if (::GetACP() == 1252) {
      ASSERT_EQ(mUmlaut, "\xFC");
    }
  }
  void TearDown() override {
    std::error_code error;
    fs::remove_all(mFolder, error);
  }

  fs::path mFolder;
  std::string mAnsi;    // mFolder in the ANSI code page
  std::string mUmlaut;  // "ü" in the ANSI code page
};

TEST_F(AnsiFolder, ConversionIsTheAnsiCodePage) {
  EXPECT_EQ(platform::NarrowToUTF16(mUmlaut), UTF16String(1, 0x00FC));
  EXPECT_EQ(platform::UTF16ToNarrow(UTF16String(1, 0x00FC)), mUmlaut);
}

TEST_F(AnsiFolder, PathUtilsQueriesAnswerAsTheSystem) {
  ASSERT_TRUE(fs::create_directory(mFolder / L"\u00FC"));
  const std::string ansi = mAnsi + "\\" + mUmlaut;
  EXPECT_TRUE(Halyard::PathUtils::ExistsOnDisk(ansi));
  EXPECT_TRUE(Halyard::PathUtils::IsFolder(ansi));
  EXPECT_EQ(Halyard::PathUtils::ExistsOnDisk(ansi), ::PathFileExistsA(ansi.c_str()) != FALSE);
  EXPECT_EQ(Halyard::PathUtils::IsFolder(ansi), ::PathIsDirectoryA(ansi.c_str()) != FALSE);
  if (::GetACP() != CP_UTF8) {
    // The UTF-8 bytes of the same name are another name here.
    const std::string utf8 = mAnsi + "\\\xC3\xBC";
    EXPECT_FALSE(Halyard::PathUtils::ExistsOnDisk(utf8));
    EXPECT_FALSE(Halyard::PathUtils::IsFolder(utf8));
    EXPECT_EQ(Halyard::PathUtils::ExistsOnDisk(utf8), ::PathFileExistsA(utf8.c_str()) != FALSE);
  }
}

TEST_F(AnsiFolder, FolderQueriesAnswerAsTheSystem) {
  ASSERT_TRUE(fs::create_directory(mFolder / L"\u00FC"));
  const std::string ansi = mAnsi + "\\" + mUmlaut;
  EXPECT_TRUE(Halyard::Folder::ExistsOnDisk(ansi));
  EXPECT_TRUE(Halyard::Folder::IsFolder(ansi));
  EXPECT_EQ(Halyard::Folder::IsFolder(ansi), ::PathIsDirectoryA(ansi.c_str()) != FALSE);
  if (::GetACP() != CP_UTF8) {
    EXPECT_FALSE(Halyard::Folder::ExistsOnDisk(mAnsi + "\\\xC3\xBC"));
    EXPECT_FALSE(Halyard::Folder::IsFolder(mAnsi + "\\\xC3\xBC"));
  }
}

TEST_F(AnsiFolder, FolderCreationTakesAnAnsiName) {
  EXPECT_TRUE(Halyard::Folder::CreateOnDisk(mAnsi + "\\n" + mUmlaut));
  EXPECT_TRUE(fs::is_directory(mFolder / L"n\u00FC"));
}

TEST_F(AnsiFolder, NarrowListingGivesAnsiNames) {
  ASSERT_TRUE(fs::create_directory(mFolder / L"\u00FC"));
  { std::ofstream(mFolder / L"\u00FC.txt") << "x"; }
  Halyard::NarrowFileNameList files;
  Halyard::NarrowFolderList folders;
  Halyard::Folder::CreateFolderObject(mAnsi).GetContainedFileAndFolderList(files, folders);
  EXPECT_EQ(files, std::vector<std::string>{mAnsi + "\\" + mUmlaut + ".txt"});
  ASSERT_EQ(folders.size(), 1u);
  EXPECT_EQ(folders[0].GetFullPath(), mAnsi + "\\" + mUmlaut);

  std::vector<char*> found;
  Halyard::VUtilsFindFilesFromName(found, mAnsi.c_str(), "*.txt", nullptr);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(std::string(found[0]), mAnsi + "\\" + mUmlaut + ".txt");
  for (char* entry : found) delete[] entry;
}

TEST_F(AnsiFolder, LoadLibraryTakesAnAnsiModuleName) {
  std::string accent;
  if (!ToAnsi(L"\u00E9", &accent)) {
    GTEST_SKIP() << "code page " << ::GetACP() << " has no \u00E9";
  }
  if (::GetACP() == 1252) {
    ASSERT_EQ(accent, "\xE9");
  }
  std::error_code error;
  ASSERT_TRUE(fs::copy_file(fs::path(TOV_TEST_PLUGIN), mFolder / L"m\u00E9dia.dll", error))
      << error.message();
  const std::string name = mAnsi + "\\m" + accent + "dia.dll";
  for (std::uint32_t flags : {0u, 1u}) {
    SCOPED_TRACE(flags);
    Halyard::HINSTANCE module = Halyard::TOVLoadLibrary(name.c_str(), nullptr, flags);
    ASSERT_NE(module, nullptr);
    const HMODULE system =
        ::LoadLibraryExA(name.c_str(), nullptr, flags == 1 ? LOAD_LIBRARY_AS_DATAFILE : 0);
    EXPECT_NE(system, nullptr);
    if (flags == 0) {
      EXPECT_EQ(static_cast<void*>(system), module);  // the same module, loaded twice
      EXPECT_NE(Halyard::TOVGetProcAddress(module, "TovTestPluginAnswer"), nullptr);
    }
    if (system != nullptr) ::FreeLibrary(system);
    EXPECT_TRUE(Halyard::TOVUnloadLibrary(module));
  }
}

}  // namespace
