// Property-list saves on Windows, where a file cannot be replaced while any
// handle has it open: a reader that lets go within a second delays the save,
// one that keeps the file open makes it fail with the old list intact.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "basalt/proplist.h"
#include "basalt/utf.h"
#include "common/temp_tree.h"
#include "common/test_files.h"
#include "platform/error.h"
#include "platform/file.h"
#include "proplist_test_support.h"

namespace {

using namespace basalt::literals;
using basalt::proplist::PropList;
using basalt::proplist::PropListError;
using basalt::proplist::utils::SavePropList;
namespace platform = tovimpl::platform;

PropList Holding(const UTF16String& file) {
  PropList list;
  list.SetString("CacheFile", file);
  return list;
}

UTF16String CacheFileIn(const UTF16String& path) {
  PropList list;
  basalt::proplist::utils::LoadPropList(path, list, 0);
  UTF16String file;
  list.GetString("CacheFile", file);
  return file;
}

// What a virus scanner or the search indexer does: open the file for
// reading, sharing everything, for a moment.
platform::FileHandle OpenAsAnotherProgram(const UTF16String& path) {
  const platform::Result<platform::OpenedFile> opened = platform::OpenFile(
      path, platform::kGenericRead,
      platform::kFileShareRead | platform::kFileShareWrite | platform::kFileShareDelete,
      platform::kOpenExisting, 0);
  EXPECT_TRUE(opened.IsOk()) << opened.Error();
  return opened ? opened->handle : platform::FileHandle();
}

TEST(PropListReplace, SaveWaitsForAReaderThatLetsGoWithinASecond) {
  tovtest::TempTree temp;
  const UTF16String path = temp.Lib("list.xml");
  SavePropList(path, Holding(u"C:\\Cache\\old.vpc"_u16));
  const platform::FileHandle reader = OpenAsAnotherProgram(path);
  std::thread release([reader] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    (void)platform::CloseFile(reader);
  });
  const auto started = std::chrono::steady_clock::now();
  EXPECT_NO_THROW(SavePropList(path, Holding(u"C:\\Cache\\new.vpc"_u16)));
  const auto waited = std::chrono::steady_clock::now() - started;
  release.join();
  EXPECT_GE(waited, std::chrono::milliseconds(150));
  EXPECT_EQ(CacheFileIn(path), u"C:\\Cache\\new.vpc"_u16);
  EXPECT_EQ(tovtest::ListFolder(temp.Native()).size(), 1u);
}

TEST(PropListReplace, SaveFailsWithAccessDeniedWhenTheListStaysOpen) {
  tovtest::TempTree temp;
  const UTF16String path = temp.Lib("list.xml");
  SavePropList(path, Holding(u"C:\\Cache\\old.vpc"_u16));
  const platform::FileHandle reader = OpenAsAnotherProgram(path);
  const auto started = std::chrono::steady_clock::now();
  EXPECT_EQ(
      tovtest::FailureOf([&] { SavePropList(path, Holding(u"C:\\Cache\\new.vpc"_u16)); }),
      (tovtest::PropListFailure{PropListError::Kind::kWriteFailed, platform::kErrorAccessDenied}));
  const auto waited = std::chrono::steady_clock::now() - started;
  (void)platform::CloseFile(reader);
  // Ten tries, 20 ms more apart each time: a little over a second in all.
  EXPECT_GE(waited, std::chrono::milliseconds(1000));
  EXPECT_LT(waited, std::chrono::seconds(5));
  EXPECT_EQ(CacheFileIn(path), u"C:\\Cache\\old.vpc"_u16);
  // The temporary file of the failed save is gone.
  EXPECT_EQ(tovtest::ListFolder(temp.Native()).size(), 1u);
}

}  // namespace
