#pragma once

#include "ado/Recorder.h"
#include "ado/provider/Provider.h"

#include <memory>
#include <string>

namespace ado {

/// The data on a server. @throws Error{io, password, notFound, syntax}; Error{unsupported} where
/// the program was built without it.
[[nodiscard]] std::unique_ptr<Provider> openServer(const std::string& address, Recorder* recorder);

} // namespace ado
