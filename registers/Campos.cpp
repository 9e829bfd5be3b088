#include "registers/Campos.h"

#include "shell/Documento.h"
#include "shell/Estrutura.h"
#include "shell/Valores.h"

namespace Campos {

namespace {

// ---- what each kind of control shows

/// A long text shows its beginning.
void mostrarTexto(QLineEdit& caixa, const QString& texto) {
    caixa.setText(texto);
    caixa.setCursorPosition(0);
}

void mostrar(QLineEdit* caixa, const ado::FieldValue& campo) {
    mostrarTexto(*caixa, Valores::texto(campo));
}
void mostrar(CaixaDocumento documento, const ado::FieldValue& campo) {
    mostrarTexto(*documento.caixa, Documento::formatar(Valores::texto(campo)));
}
void mostrar(MemoEdit* caixa, const ado::FieldValue& campo) {
    caixa->setText(Valores::texto(campo));
}
void mostrar(DropDownList* lista, const ado::FieldValue& campo) {
    lista->setText(Valores::texto(campo));
}
void mostrar(DatePicker* data, const ado::FieldValue& campo) {
    data->setValue(Valores::dia(campo));
}
void mostrar(MoneyEdit* valor, const ado::FieldValue& campo) {
    valor->setValor(Valores::valor(campo));
}

// ---- and saves

QString textoDe(QLineEdit* caixa) { return caixa->text(); }
QString textoDe(CaixaDocumento documento) { return Documento::semSinais(documento.caixa->text()); }
QString textoDe(MemoEdit* caixa) { return caixa->text(); }
QString textoDe(DropDownList* lista) { return lista->text(); }

void gravar(auto controle, ado::Field campo) { campo = textoDe(controle); }
void gravar(DatePicker* data, ado::Field campo) {
    if (Valores::dia(campo) == data->value())
        return; // the other system stores a time with the day: it stays
    campo = Valores::data(data->value());
}
void gravar(MoneyEdit* valor, ado::Field campo) { campo = Valores::moeda(valor->valor()); }

// ---- and may hold

void limitar(auto /*controle*/, const ado::FieldValue& /*campo*/) {}
void limitar(QLineEdit* caixa, const ado::FieldValue& campo) {
    if (const auto tamanho = campo.DefinedSize())
        caixa->setMaxLength(static_cast<int>(*tamanho));
}
void limitar(DropDownList* lista, const ado::FieldValue& campo) {
    limitar(lista->lineEdit(), campo);
}

QWidget* janelaDe(QWidget* controle) { return controle; }
QWidget* janelaDe(CaixaDocumento documento) { return documento.caixa; }

std::optional<Recusa> recusa(auto controle, const ado::FieldValue& campo) {
    if (const auto motivo = campo.refusal(textoDe(controle)))
        return Recusa{janelaDe(controle), QString::fromStdString(*motivo)};
    return std::nullopt;
}
std::optional<Recusa> recusa(DatePicker* /*data*/, const ado::FieldValue& /*campo*/) { return {}; }
std::optional<Recusa> recusa(MoneyEdit* valor, const ado::FieldValue& campo) {
    if (const auto motivo = campo.refusal(Valores::moeda(valor->valor())))
        return Recusa{valor, QString::fromStdString(*motivo)};
    return std::nullopt;
}

} // namespace

void dispensar(const ado::Recordset& rs, std::span<const Campo> campos) {
    std::vector<Estrutura::Dispensavel> dispensaveis;
    for (const Campo& campo : campos)
        dispensaveis.push_back(
            {campo.nome, std::visit([](auto controle) -> QWidget* { return janelaDe(controle); },
                                    campo.controle)});
    Estrutura::dispensar(rs, dispensaveis);
}

void limitar(const ado::Recordset& rs, std::span<const Campo> campos) {
    for (const Campo& campo : campos)
        std::visit([&](auto controle) { limitar(controle, rs[campo.nome]); }, campo.controle);
}

void mostrar(const ado::Recordset& rs, std::span<const Campo> campos) {
    for (const Campo& campo : campos) {
        const ado::FieldValue valor = rs[campo.nome];
        if (!valor.isNull())
            std::visit([&](auto controle) { mostrar(controle, valor); }, campo.controle);
    }
}

void gravar(ado::Recordset& rs, std::span<const Campo> campos) {
    for (const Campo& campo : campos)
        std::visit([&](auto controle) { gravar(controle, rs[campo.nome]); }, campo.controle);
}

std::optional<Recusa> recusa(const ado::Recordset& rs, std::span<const Campo> campos) {
    for (const Campo& campo : campos) {
        auto achada = std::visit([&](auto controle) { return recusa(controle, rs[campo.nome]); },
                                 campo.controle);
        if (achada)
            return achada;
    }
    return std::nullopt;
}

} // namespace Campos
