/* The Windows form of the module and resource tests' plug-in: an exported
   function, a mark left when the module's code runs (DllMain), and the
   resources of test_plugin.rc: a "PIPL" resource and one of another type,
   with the bytes the ELF form carries in its sections. */
#include <stdlib.h>
#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
  (void)module;
  (void)reserved;
  if (reason == DLL_PROCESS_ATTACH) _putenv_s("TOV_TEST_PLUGIN_RAN", "1");
  return TRUE;
}

__declspec(dllexport) int TovTestPluginAnswer(void) { return 42; }
