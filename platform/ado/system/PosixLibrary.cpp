#include "ado/system/SharedLibrary.h"

#include <dlfcn.h>

namespace ado {

void* symbolIn(const std::string& library, int version, const char* symbol) {
    const std::string file = "lib" + library + ".so." + std::to_string(version);
    void* const loaded = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    return loaded != nullptr ? dlsym(loaded, symbol) : nullptr;
}

} // namespace ado
