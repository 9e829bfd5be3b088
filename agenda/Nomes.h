#pragma once

#include <QHash>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace ado {
class FieldValue;
}

/// The names of clients or banks by their codes. Not joined with the rows that have these: a code
/// that its register has twice, or not at all, would double a row or drop it.
class Nomes {
public:
    /// A code of a row; none where it has none.
    using Codigo = std::optional<std::int64_t>;
    [[nodiscard]] static Codigo codigo(const ado::FieldValue& campo);

    /// The codes may come in any order and more than once. @throws jet::Error.
    Nomes(const char* cadastro, std::vector<Codigo> codigos);

    /// Whether no code is among these that wasn't when they were read.
    [[nodiscard]] bool bastamPara(const std::vector<Codigo>& codigos) const;

    /// "" without a code; where the register has none, which code that is.
    [[nodiscard]] QString de(const Codigo& codigo) const;

private:
    std::vector<Codigo> lidos_; ///< in their order, each once
    QHash<std::int64_t, QString> porCodigo_;
};
