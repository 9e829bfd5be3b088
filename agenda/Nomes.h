#pragma once

#include <QHash>
#include <QString>

#include <cstdint>

namespace ado {
class Recordset;
}

/// The names of the clients or banks of which rows have the code. Not joined with these: a code
/// that its register has twice, or not at all, would double a row or drop it.
class Nomes {
public:
    /// Those of `cadastro` that `linhas`, "<table> where <condition>", name in their field `campo`,
    /// which outlives this. @throws jet::Error.
    Nomes(const char* cadastro, const char* campo, const QString& linhas);

    /// "" without a code; where the register has none, which code that is.
    [[nodiscard]] QString de(const ado::Recordset& linha) const;

private:
    const char* campo_;
    QHash<std::int64_t, QString> porCodigo_;
};
