#pragma once

#include "ado/Field.h"
#include "controls/typing/Formato.h"
#include "jet/Error.h"

#include <QDate>
#include <QString>

#include <string>
#include <variant>

/// The values of fields as the controls take them, and back.
namespace Valores {

[[nodiscard]] inline QString texto(const ado::FieldValue& campo) {
    return QString::fromStdString(campo.text());
}

[[nodiscard]] inline Amount valor(const ado::FieldValue& campo) {
    return {campo.currency().tenThousandths};
}
[[nodiscard]] inline jet::Currency moeda(Amount valor) { return {valor.tenThousandths}; }

/// @throws jet::Error{outOfRange}: `que` ("O total dos cheques do cliente") is too large.
[[noreturn]] inline void grandeDemais(const char* que) {
    throw jet::Error(jet::Errc::outOfRange, std::string(que) + " passa do maior valor possível.");
}
/// Both together. @throws as grandeDemais() does, if no amount is so large.
[[nodiscard]] inline Amount soma(Amount a, Amount b, const char* que) {
    const auto total = sum(a, b);
    if (!total)
        grandeDemais(que);
    return *total;
}

/// The day of a moment, without its time.
[[nodiscard]] inline QDate dia(const jet::Date& momento) {
    const jet::CivilTime civil = momento.civil();
    return {civil.year, civil.month, civil.day};
}
/// The same; no date for an empty field.
[[nodiscard]] inline QDate dia(const ado::FieldValue& campo) {
    const jet::Value valor = campo.value();
    const auto* const momento = std::get_if<jet::Date>(&valor);
    return momento != nullptr ? dia(*momento) : jet::isNull(valor) ? QDate() : dia(campo.date());
}
[[nodiscard]] inline jet::Date data(const QDate& dia) {
    return jet::Date::of({.year = dia.year(), .month = dia.month(), .day = dia.day()});
}
/// The day as a statement has it: "#12/31/2024#", the month first.
[[nodiscard]] inline QString literal(const QDate& dia) {
    return "#" + dia.toString("MM/dd/yyyy") + "#";
}

} // namespace Valores
