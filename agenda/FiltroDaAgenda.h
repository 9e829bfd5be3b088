#pragma once

#include "agenda/Vencimentos.h"

#include <QString>

#include <vector>

class DatePicker;
class DropDownList;

/// What the agenda is asked for, as the fields of its window say it.
class FiltroDaAgenda {
public:
    struct Campos {
        DropDownList* periodo;
        DatePicker* inicio;
        DatePicker* fim;
        DropDownList* destino;
        DropDownList* cliente;
        DropDownList* banco;
    };
    /// Of a window that has no fields yet.
    FiltroDaAgenda() = default;
    explicit FiltroDaAgenda(const Campos& campos) : campos_(campos) {}

    /// The choices of the fields that have always the same ones.
    void encher();
    /// Puts these days into the fields: as a period if they are one.
    void escolher(const Vencimentos::Dias& dias);
    /// Takes the period that is chosen: a text that is none of them leaves the last one.
    void trocarPeriodo();
    /// A text that is none of the choices: the last one counts.
    void completar();
    /// Shows from when to when the period goes that these cheques, in the order of their due dates,
    /// were asked for with.
    void mostrarDias(const Vencimentos::Dias& dias,
                     const std::vector<Vencimentos::Cheque>& achados);

    [[nodiscard]] Vencimentos::Procura procura() const;
    /// The same in words, for who reads the list on paper.
    [[nodiscard]] QString emPalavras(const Vencimentos::Procura& procurado) const;

private:
    Campos campos_{};
    Vencimentos::Periodo periodo_ = Vencimentos::Periodo::semana;
};
