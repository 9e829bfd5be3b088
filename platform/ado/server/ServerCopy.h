#pragma once

#include "ado/server/ServerLine.h"

#include <functional>

/// Whole tables at once, inside a transaction whose first statement has been run.
namespace ado {

/// "copy ... from stdin": `next` gives a piece after the other, and false at the end.
/// @throws what `next` throws, and what the server refuses: the transaction can only be undone
///         then.
void copyIn(ServerLine& line, const std::string& sql,
            const std::function<bool(std::string& piece)>& next);
/// "copy ... to stdout": `take` gets a piece after the other. @throws as copyIn().
void copyOut(ServerLine& line, const std::string& sql,
             const std::function<void(std::string_view piece)>& take);

} // namespace ado
