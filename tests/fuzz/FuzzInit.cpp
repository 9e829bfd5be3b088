// Any bytes as init.ini: the folder is one line of text, whatever stands there.
#include "fuzz/Fuzz.h"
#include "shell/Configuracao.h"

#include <fstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::Folder folder;
    const std::filesystem::path path = folder / "init.ini";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    const QString pasta =
        Configuracao::pastaDosDados(QString::fromStdString(path.parent_path().string()));
    fuzz::require(!pasta.contains('\n') && !pasta.contains('\r'));
    fuzz::require(pasta.size() <= static_cast<qsizetype>(size));
    return 0;
}
