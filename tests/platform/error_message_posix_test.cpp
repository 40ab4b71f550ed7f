// OS error messages on POSIX: the Windows codes of the OS layer's errno table
// answer the "C"-locale strerror text and a line break.
#include <gtest/gtest.h>

#include <cerrno>

#include "basalt/localizer.h"
#include "platform/error.h"
#include "platform/posix/posix_support.h"
#include "platform/text.h"
#include "tovfoundation/text.h"

using namespace basalt::literals;

namespace {

TEST(ErrorMessage, KnownCodesGiveCLocaleSystemTextWithLineBreak) {
  struct Row {
    std::uint32_t code;
    UTF16String expected;
  } rows[] = {
      {2, u"No such file or directory\r\n"_u16},
      {3, u"No such file or directory\r\n"_u16},
      {5, u"Permission denied\r\n"_u16},
      {80, u"File exists\r\n"_u16},
      {183, u"File exists\r\n"_u16},
      {112, u"No space left on device\r\n"_u16},
      {206, u"File name too long\r\n"_u16},
      {87, u"Invalid argument\r\n"_u16},
      {145, u"Directory not empty\r\n"_u16},
      {31, u"Input/output error\r\n"_u16},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.code);
    EXPECT_EQ(Halyard::Win32ErrorCodeToMessage(row.code), row.expected);
  }
}

TEST(ErrorMessage, EveryCodeOfTheErrnoTableHasText) {
  const int errors[] = {ENOENT,      ENOTDIR,    EACCES,    EPERM,  EISDIR,   EROFS,
                        EEXIST,      ENOTEMPTY,  ENOSPC,    EDQUOT, EFBIG,    ENAMETOOLONG,
                        EWOULDBLOCK, EBUSY,      ETXTBSY,   EBADF,  EINVAL,   ENOMEM,
                        EMFILE,      ENFILE,     EXDEV,     EPIPE,  ELOOP,    EMLINK,
                        ENOSYS,      EOPNOTSUPP, ETIMEDOUT, EIO,    EHOSTDOWN};
  for (int error : errors) {
    SCOPED_TRACE(error);
    const std::uint32_t code = tovimpl::platform::posix::MapErrno(error);
    const tovimpl::platform::Result<UTF16String> text =
        tovimpl::platform::FormatSystemMessage(code, 0x400);
    ASSERT_TRUE(text);
    ASSERT_GT(text->size(), 2u);
    EXPECT_EQ(text->substr(text->size() - 2), u"\r\n"_u16);
  }
}

TEST(ErrorMessage, CodeTheLayerNeverProducesGivesFallback) {
  basalt::config::Localizer::ClearTranslations();
  // ERROR_INVALID_DATA has a Windows text but no errno behind it here.
  EXPECT_EQ(Halyard::Win32ErrorCodeToMessage(13),
            u"There was an error converting this Win32 error to a message!"_u16);
}

TEST(ErrorMessage, SystemLayerGivesTheTextOfAKnownCode) {
  const tovimpl::platform::Result<UTF16String> text =
      tovimpl::platform::FormatSystemMessage(2, 0x400);
  ASSERT_TRUE(text);
  EXPECT_EQ(*text, u"No such file or directory\r\n"_u16);
}

TEST(ErrorMessage, SystemLayerCarriesMissingTextAsError317) {
  tovimpl::platform::SetLastError(0);
  const tovimpl::platform::Result<UTF16String> text =
      tovimpl::platform::FormatSystemMessage(0xDEADBEEF, 0x400);
  EXPECT_FALSE(text);
  EXPECT_EQ(text.Error(), tovimpl::platform::kErrorMrMidNotFound);
  EXPECT_EQ(text.Error(), 317u);
  EXPECT_TRUE(text->empty());
  EXPECT_EQ(tovimpl::platform::GetLastError(), 0u);  // the slot is left alone
}

}  // namespace
