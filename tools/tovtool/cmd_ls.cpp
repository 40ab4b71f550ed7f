// tovtool ls FOLDER [--title T] [--ext .E] [--recursive]: the filtered folder
// listing. Files come first, in the library's order (a folder's files after
// everything found in its subfolders), then the reported folders with a
// trailing '/'.
//
// The library's listing skips what it cannot read without a word, so the tool
// checks the folder (and with --recursive every folder below it) itself: the
// listing is printed, and each folder that could not be read is named on
// stderr with the reason, exit 1.
#include <iostream>

#include "tool.h"
#include "tool_io.h"
#include "tovfoundation/tovfoundation.h"

namespace {

int RunLs(const tovtool::Args& input) {
  tovtool::Args args = input;
  const auto title = tovtool::TakeOption(args, "title");
  const auto extension = tovtool::TakeOption(args, "ext");
  const bool recursive = tovtool::TakeFlag(args, "recursive");
  tovtool::RejectUnknownOptions(args);
  if (args.size() != 1) throw tovtool::UsageError("ls needs one FOLDER");
  tovtool::RequireReadableFolder(args[0]);
  const std::vector<std::string> unreadable =
      recursive ? tovtool::UnreadableSubfolders(args[0]) : std::vector<std::string>();

  const UTF16String folder = basalt::UTF8to16(args[0]);
  const UTF16String titleText = title ? basalt::UTF8to16(*title) : UTF16String();
  Halyard::FileUtils::FileNameList files;
  Halyard::FileUtils::FolderList folders;
  Halyard::FileUtils::Folder::CreateFolderObject(folder).GetContainedFileAndFolderList(
      title ? titleText.c_str() : nullptr, extension ? extension->c_str() : nullptr, files, folders,
      recursive ? 1 : 0);
  for (const auto& file : files) {
    std::cout << basalt::UTF16to8(Halyard::PathUtilities::ToPlatformPath(file)) << '\n';
  }
  for (const auto& sub : folders) {
    std::cout << basalt::UTF16to8(Halyard::PathUtilities::ToPlatformPath(sub.GetFullPath()))
              << "/\n";
  }
  for (const auto& folderError : unreadable) {
    std::cerr << "tovtool ls: cannot read " << folderError << '\n';
  }
  return unreadable.empty() ? tovtool::kExitSuccess : tovtool::kExitFailure;
}

TOVTOOL_COMMAND({"ls", "list a folder, filtered by title and extension",
                 "tovtool ls FOLDER [--title T] [--ext .E] [--recursive]\n"
                 "  Lists the files of FOLDER whose title contains T (ignoring case) and whose\n"
                 "  extension is exactly .E (with its dot, case-sensitive), then the folders:\n"
                 "  every direct subfolder, or with --recursive the subfolders that held\n"
                 "  matching files (each after the folders found inside it). A FOLDER that\n"
                 "  cannot be read exits 1; with --recursive, so does any folder below it\n"
                 "  that cannot be read (named on stderr, after the listing of the rest).",
                 RunLs});

}  // namespace
