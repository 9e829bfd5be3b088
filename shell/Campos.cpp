#include "shell/Campos.h"

#include "ado/Recordset.h"
#include "shell/Documento.h"
#include "shell/Estrutura.h"
#include "shell/Mirtal.h"
#include "shell/Valores.h"

#include <algorithm>
#include <string>
#include <utility>

namespace {

using Documentos = Campos::CaixaDocumento;
using Codigos = Campos::ListaDeCodigos;

QWidget* widgetDe(QWidget* controle) { return controle; }
QWidget* widgetDe(Documentos documento) { return documento.caixa; }
QWidget* widgetDe(Codigos codigos) { return codigos.lista; }

QWidget* widgetDe(const Campos::Controle& controle) {
    return std::visit([](auto each) { return widgetDe(each); }, controle);
}

// ---- what each kind of control shows; for a null field, as in an empty window

/// A long text shows its beginning.
void mostrarTexto(QLineEdit& caixa, const QString& texto) {
    caixa.setText(texto);
    caixa.setCursorPosition(0);
}

void mostrar(QLineEdit* caixa, const ado::FieldValue& campo) {
    mostrarTexto(*caixa, Valores::texto(campo));
}
void mostrar(Documentos documento, const ado::FieldValue& campo) {
    mostrarTexto(*documento.caixa, Documento::formatar(Valores::texto(campo)));
}
void mostrar(MemoEdit* caixa, const ado::FieldValue& campo) {
    caixa->setText(Valores::texto(campo));
}
void mostrar(DropDownList* lista, const ado::FieldValue& campo) {
    lista->setText(Valores::texto(campo));
}
void mostrar(QCheckBox* caixa, const ado::FieldValue& campo) { caixa->setChecked(campo.boolean()); }
void mostrar(DatePicker* data, const ado::FieldValue& campo) {
    data->setValue(campo.isNull() ? QDate::currentDate() : Valores::dia(campo));
}
void mostrar(MoneyEdit* valor, const ado::FieldValue& campo) {
    valor->setValor(Valores::valor(campo));
}
// By the code and not by the name, since several may have one. Who has been added elsewhere since
// the list was filled gets his entry. Where the row is missing none is chosen, so that no save
// hands the record to whoever was on show before.
void mostrar(Codigos codigos, const ado::FieldValue& campo) {
    Campos::escolher(codigos, campo.integer());
}

// ---- holds now

QVariant agora(QLineEdit* caixa) { return caixa->text(); }
QVariant agora(Documentos documento) { return documento.caixa->text(); }
QVariant agora(MemoEdit* caixa) { return caixa->text(); }
QVariant agora(DropDownList* lista) { return lista->text(); }
QVariant agora(QCheckBox* caixa) { return caixa->isChecked(); }
QVariant agora(DatePicker* data) { return data->value(); }
QVariant agora(MoneyEdit* valor) { return qlonglong{valor->valor().tenThousandths}; }
QVariant agora(Codigos codigos) {
    const int escolhido = codigos.lista->listIndex();
    return escolhido < 0 ? QVariant() : qlonglong{codigos.lista->itemData(escolhido)};
}

QVariant agora(const Campos::Controle& controle) {
    return std::visit([](auto each) { return agora(each); }, controle);
}

// ---- and saves

QString textoDe(auto* controle) { return controle->text(); }
QString textoDe(Documentos documento) { return Documento::semSinais(documento.caixa->text()); }

void gravar(auto controle, ado::Field campo) { campo = textoDe(controle); }
void gravar(QCheckBox* caixa, ado::Field campo) { campo = caixa->isChecked(); }
void gravar(DatePicker* data, ado::Field campo) { campo = Valores::data(data->value()); }
void gravar(MoneyEdit* valor, ado::Field campo) { campo = Valores::moeda(valor->valor()); }
void gravar(Codigos codigos, ado::Field campo) {
    campo = codigos.lista->itemData(codigos.lista->listIndex());
}

// ---- the room that a text has

void darLugar(auto /*controle*/, int /*caracteres*/) {}
void darLugar(QLineEdit* caixa, int caracteres) { caixa->setMaxLength(caracteres); }
void darLugar(ActiveText* caixa, int caracteres) { caixa->setRoom(caracteres); }
void darLugar(DropDownList* lista, int caracteres) { lista->lineEdit()->setMaxLength(caracteres); }

/// Lets as much be typed as the field holds, and no less than the text to be shown has.
void darLugar(const Campos::Controle& controle, std::optional<std::size_t> limite,
              const QString& texto = {}) {
    if (!limite)
        return;
    const int lugar = std::max(static_cast<int>(*limite), static_cast<int>(texto.size()));
    std::visit([lugar](auto each) { darLugar(each, lugar); }, controle);
}

// ---- why a text can't be stored

/// The label, as the operator reads it.
QString rotulo(const Campos::Campo& campo) {
    const QString nome = widgetDe(campo.controle)->accessibleName();
    return nome.isEmpty() ? QString(campo.nome) : nome;
}

QString semLugar(const QString& rotulo, const std::string& texto, const ado::Unstorable& sinal) {
    const QString antes = QString::fromStdString(texto.substr(0, sinal.at));
    const QString este = QString::fromStdString(texto.substr(sinal.at, sinal.bytes));
    const char32_t codigo = este.toUcs4().value(0);
    QString qual = "o caractere \"" + este + "\"";
    if (!QChar::isPrint(codigo) || QChar::isSpace(codigo) || QChar::isMark(codigo)) {
        constexpr qsizetype kMostrados = 20;
        qual = antes.isEmpty() ? QString("um caractere invisível no começo")
                               : "um caractere invisível depois de \"" +
                                     antes.last(std::min(antes.size(), kMostrados)) + "\"";
    }
    return "O campo \"" + rotulo + "\" tem " + qual +
           ", que não pode ser gravado nesta base de dados. Apague-o ou troque-o por outro.";
}

std::optional<QString> recusado(const Campos::Campo& campo, const ado::FieldValue& valor,
                                const std::optional<std::string>& motivo) {
    if (!motivo)
        return std::nullopt;
    return QString::fromStdString(*motivo).replace(
        "\"" + QString::fromStdString(valor.name()) + "\"", "\"" + rotulo(campo) + "\"");
}

std::optional<QString> recusa(const Campos::Campo& campo, auto controle,
                              const ado::FieldValue& valor) {
    const std::string texto = textoDe(controle).toStdString();
    if (const auto sinal = valor.unstorable(texto))
        return semLugar(rotulo(campo), texto, *sinal);
    return recusado(campo, valor, valor.refusal(texto));
}
std::optional<QString> recusa(const Campos::Campo& campo, MoneyEdit* controle,
                              const ado::FieldValue& valor) {
    return recusado(campo, valor, valor.refusal(Valores::moeda(controle->valor())));
}
std::optional<QString> recusa(const Campos::Campo& /*campo*/, DatePicker* /*data*/,
                              const ado::FieldValue& /*valor*/) {
    return {};
}
std::optional<QString> recusa(const Campos::Campo& /*campo*/, QCheckBox* /*caixa*/,
                              const ado::FieldValue& /*valor*/) {
    return {};
}
std::optional<QString> recusa(const Campos::Campo& /*campo*/, Codigos /*codigos*/,
                              const ado::FieldValue& /*valor*/) {
    return {};
}

} // namespace

void Campos::escolher(ListaDeCodigos codigos, std::int64_t codigo) {
    auto& [lista, registros] = codigos;
    lista->setListIndex(-1);
    if (!Mirtal::localizar(*registros, "CODIGO=" + QString::number(codigo)))
        return;
    for (int i = 0; i < lista->count(); ++i)
        if (lista->itemData(i) == codigo)
            return lista->setListIndex(i);
    lista->addItem(Valores::texto((*registros)["nome"]), codigo);
    lista->setListIndex(lista->count() - 1);
}

Campos::Campos(Nulo nulo, const std::vector<Campo>& campos) : nulo_(nulo) {
    linhas_.reserve(campos.size());
    for (const Campo& campo : campos)
        linhas_.push_back({campo, std::nullopt, {}});
}

void Campos::dispensar(const ado::Recordset& rs) const {
    std::vector<Estrutura::Dispensavel> dispensaveis;
    for (const Linha& linha : linhas_)
        dispensaveis.push_back({linha.campo.nome, widgetDe(linha.campo.controle)});
    Estrutura::dispensar(rs, dispensaveis);
}

void Campos::limitar(const ado::Recordset& rs) {
    for (Linha& linha : linhas_) {
        linha.limite = rs[linha.campo.nome].DefinedSize();
        darLugar(linha.campo.controle, linha.limite);
    }
}

void Campos::mostrarCampo(Linha& linha, const ado::FieldValue& valor) const {
    if (valor.isNull() && nulo_ == Nulo::mantem)
        return;
    if (linha.limite)
        darLugar(linha.campo.controle, linha.limite, Valores::texto(valor));
    std::visit([&](auto controle) { ::mostrar(controle, valor); }, linha.campo.controle);
    linha.gravado = agora(linha.campo.controle);
}

void Campos::mostrar(const ado::Recordset& rs) {
    for (Linha& linha : linhas_) {
        linha.gravado.clear(); // of a null field that leaves its control alone, all is to be saved
        mostrarCampo(linha, rs[linha.campo.nome]);
    }
}

void Campos::copiar(const ado::Recordset& rs, const char* menos) {
    for (Linha& linha : linhas_)
        if (std::string_view(linha.campo.nome) != menos) {
            mostrarCampo(linha, rs[linha.campo.nome]);
            linha.gravado.clear();
        }
}

void Campos::esquecer() {
    for (Linha& linha : linhas_) {
        linha.gravado.clear();
        darLugar(linha.campo.controle, linha.limite);
    }
}

void Campos::lembrar() {
    for (Linha& linha : linhas_)
        linha.gravado = agora(linha.campo.controle);
}

std::optional<Campos::Recusa> Campos::recusa(const ado::Recordset& rs) const {
    for (const Linha& linha : linhas_) {
        const Campo& campo = linha.campo;
        if (linha.gravado == agora(campo.controle))
            continue;
        const ado::FieldValue valor = rs[campo.nome];
        auto motivo = std::visit([&](auto controle) { return ::recusa(campo, controle, valor); },
                                 campo.controle);
        if (motivo)
            return Recusa{widgetDe(campo.controle), *std::move(motivo)};
    }
    return std::nullopt;
}

void Campos::gravar(ado::Recordset& rs) const {
    for (const Linha& linha : linhas_)
        if (linha.gravado != agora(linha.campo.controle))
            std::visit([&](auto controle) { ::gravar(controle, rs[linha.campo.nome]); },
                       linha.campo.controle);
}
