// tovtool demo: paths, automatic and temporary names, folder listings.
#include <filesystem>
#include <ostream>
#include <system_error>

#include "tool.h"
#include "tovfoundation/tovfoundation.h"

namespace {

std::string U8(const UTF16String& text) { return basalt::UTF16to8(text); }

void DemoFiles(std::ostream& out) {
  using namespace basalt::literals;
  namespace PU = Halyard::PathUtilities;
  const UTF16String path = u"C:\\Media\\Clips\\take.final.wav"_u16;
  out << "path " << U8(path) << '\n';
  out << "  folder path " << U8(PU::TOVGetFolderPath(path)) << ", folder name "
      << U8(PU::TOVGetFolderName(path)) << ", title " << U8(PU::TOVGetFileTitle(path))
      << ", extension " << U8(PU::TOVGetFileExtension(path)) << ", root "
      << U8(PU::TOVGetRootOrVolume(path)) << '\n';
  out << "  long form " << U8(PU::ToNormalizedPath(u"\\\\server\\share\\x"_u16)) << '\n';
  const Halyard::FileUtils::CFileSpec spec(path);
  out << "  as a file spec: extension without dot \"" << U8(spec.TOVGetFileExtension()) << "\"\n";
  out << "this program is " << U8(PU::GetModuleName()) << '\n';
  try {
    const UTF16String temp = PU::TOVGetTempFolder();
    out << "temporary folder " << U8(temp) << '\n';
    const UTF16String work = PU::GetAutoFileName(temp, u"tovdemo"_u16, u".dir"_u16);
    PU::TOVDeleteFile(work);  // the name is unique; use it for a folder
    Halyard::FileUtils::Folder::CreateOnDisk(work + u"\\sub"_u16);
    const UTF16String a = PU::GetAutoFileName(work, u"clip"_u16, u".wav"_u16);
    const UTF16String b = PU::GetAutoFileName(work + u"\\sub"_u16, u"clip"_u16, u".wav"_u16);
    const UTF16String c = PU::GetAutoFileName(work, u"notes"_u16, u".txt"_u16);
    out << "automatic name " << U8(PU::TOVGetFileName(a)) << '\n';
    Halyard::FileUtils::FileNameList files;
    Halyard::FileUtils::FolderList folders;
    Halyard::FileUtils::Folder::CreateFolderObject(work).GetContainedFileAndFolderList(
        nullptr, ".wav", files, folders, 1);
    out << "recursive listing of *.wav found " << files.size() << " files in " << folders.size()
        << " reported subfolder(s)\n";
    for (const auto& f : {a, b, c}) PU::TOVDeleteFile(f);
    std::error_code ignored;
    std::filesystem::remove_all(U8(PU::ToPlatformPath(work)), ignored);
  } catch (const TOV::TOVException& e) {
    out << "temporary folder unavailable: " << e.what() << '\n';
  }
}

TOVTOOL_DEMO_SECTION({50, "Files, folders and paths", DemoFiles});

}  // namespace
