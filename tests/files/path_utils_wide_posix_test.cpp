// PathUtils' wide-string overloads on POSIX systems: the wide path is reduced
// to the thread's narrow encoding, and in the "C" locale characters it cannot
// encode, surrogates included, become '?'.
#include <gtest/gtest.h>
#include <locale.h>

#include <string>

#include "files/files_support.h"
#include "tovfoundation/files.h"

using tovtest::TempTree;

namespace {

std::u16string Widen(const std::string& ascii) {
  return std::u16string(ascii.begin(), ascii.end());
}

class CThread {
 public:
  CThread() : mLocale(::newlocale(LC_ALL_MASK, "C", nullptr)) {
    if (mLocale != nullptr) mPrevious = ::uselocale(mLocale);
  }
  ~CThread() {
    if (mLocale == nullptr) return;
    ::uselocale(mPrevious);
    ::freelocale(mLocale);
  }
  CThread(const CThread&) = delete;
  CThread& operator=(const CThread&) = delete;
  bool Active() const { return mLocale != nullptr; }

 private:
  locale_t mLocale;
  locale_t mPrevious = nullptr;
};

TEST(PathUtilsWidePosix, SurrogatePairAndLoneSurrogatesBecomeQuestionMarks) {
  CThread c;
  if (!c.Active()) GTEST_SKIP() << "no C locale object";
  TempTree temp("wide-paths");
  tovtest::WriteBytes(temp.NativeOf("n?"), tovtest::Bytes{1});
  tovtest::WriteBytes(temp.NativeOf("?a"), tovtest::Bytes{1});
  tovtest::WriteBytes(temp.NativeOf("b?"), tovtest::Bytes{1});
  tovtest::WriteBytes(temp.NativeOf("??"), tovtest::Bytes{1});
  const std::u16string base = Widen(temp.Native()) + u"/";
  // A pair is one character: one '?'.
  EXPECT_TRUE(Halyard::PathUtils::ExistsOnDisk(base + u"n\U0001D11E"));
  // A high surrogate before an ordinary character, and one at the end.
  EXPECT_TRUE(Halyard::PathUtils::ExistsOnDisk(base + std::u16string{0xD834, u'a'}));
  EXPECT_TRUE(Halyard::PathUtils::ExistsOnDisk(base + std::u16string{u'b', 0xD834}));
  // A high surrogate before a character above the low surrogates, a lone low one.
  EXPECT_TRUE(Halyard::PathUtils::ExistsOnDisk(base + std::u16string{0xD834, 0xE000}));
  EXPECT_TRUE(Halyard::PathUtils::ExistsOnDisk(base + std::u16string{0xDC00, 0xE001}));
}

}  // namespace
