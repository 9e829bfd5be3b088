#include "ado/system/SharedLibrary.h"

#include <windows.h>

namespace ado {

// Looked for beside the program and in the system's own folder: not in whatever folder a program
// happens to be started in.
void* symbolIn(const std::string& library, int /*version*/, const char* symbol) {
    const std::string file = "lib" + library + ".dll";
    const HMODULE loaded = LoadLibraryExA(file.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    return loaded != nullptr ? reinterpret_cast<void*>(GetProcAddress(loaded, symbol)) : nullptr;
}

} // namespace ado
