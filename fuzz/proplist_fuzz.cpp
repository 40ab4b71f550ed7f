// Fuzzes the property-list reader (the parser behind LoadPropList, as used on
// "MasterFolderList.xml"): any bytes must either load or raise PropListError,
// never crash, leak or hang. A list that loads must survive a second trip
// through the writer and the reader unchanged.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "basalt/proplist.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using basalt::proplist::PropList;
  using basalt::proplist::PropListError;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  PropList list;
  try {
    basalt::proplist::utils::ParsePropList(bytes, list);
  } catch (const PropListError&) {
    return 0;
  }
  // Text the writer cannot carry is replaced on the first save; after that a
  // save and a load change nothing.
  PropList once;
  basalt::proplist::utils::ParsePropList(basalt::proplist::utils::FormatPropList(list), once);
  PropList twice;
  basalt::proplist::utils::ParsePropList(basalt::proplist::utils::FormatPropList(once), twice);
  if (!(once == twice)) std::abort();
  return 0;
}
