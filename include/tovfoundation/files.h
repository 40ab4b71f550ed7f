// tovfoundation files subsystem: path text, file specs (CFileSpec), folders and
// their listings, temporary and automatic names, file search.
//
// Paths are spelled the Windows way on every platform: backslash separators,
// optional drive ("C:"), UNC roots ("\\server\share"), the long-path prefix
// ("\\?\"). The string operations are pure functions that follow the Windows
// rules exactly, so the same text gives the same pieces everywhere:
//
//   using namespace basalt::literals;
//   namespace PU = Halyard::PathUtilities;
//   PU::TOVGetFileName(u"C:\\a\\b\\c.txt"_u16)        == u"c.txt"_u16
//   PU::TOVGetFolderPath(u"C:\\a\\b\\c.txt"_u16)      == u"\\a\\b\\"_u16
//   PU::TOVGetRootOrVolume(u"\\\\srv\\share\\x"_u16)  == u"\\\\srv\\share"_u16
//   PU::ToNormalizedPath(u"\\\\srv\\s"_u16)           == u"\\\\?\\UNC\\srv\\s"_u16
//
// Operations that touch the disk go through the library's OS layer. On POSIX a
// library path "\home\ed\clip.wav" names /home/ed/clip.wav (ToPlatformPath
// gives that spelling to hand to other code); a drive such as "C:" is just the
// first component of a relative path there.
//
// Reporting: the string operations never fail. Folder creation, temporary and
// automatic names throw the exception classes below; file operations answer
// true/false or a status (TOV::kErr...). No other exception leaves the
// subsystem, except std::bad_alloc.
//
// Threads: every function may be called from any thread, with two exceptions
// stated where they are declared: GetAutoFileName serialises its callers with
// a process-wide lock, and VUtilsFindFilesFromName changes the process's
// current directory while it runs.
#pragma once

#include "tovfoundation/files/file_exceptions.h"
#include "tovfoundation/files/file_operations.h"
#include "tovfoundation/files/file_search.h"
#include "tovfoundation/files/file_spec.h"
#include "tovfoundation/files/folder.h"
#include "tovfoundation/files/path_utilities.h"
#include "tovfoundation/files/path_utils.h"
#include "tovfoundation/files/temp_names.h"
