#include "shell/PaginaDeAjuda.h"

#include "controls/typing/Accents.h"
#include "shell/Manual.h"

#include <QEvent>
#include <QImage>
#include <QTextBlock>
#include <QTextDocument>
#include <QUrlQuery>

#include <algorithm>
#include <vector>

namespace {

constexpr char kBase[] = "qrc:/manual/";
constexpr char kProcura[] = "procura";
constexpr char kPalavras[] = "palavras";
constexpr char kFim[] = ".html";

QString palavrasDe(const QUrl& endereco) {
    return QUrlQuery(endereco).queryItemValue(kPalavras, QUrl::FullyDecoded);
}

QUrl com(const QString& arquivo, const QString& palavras) {
    QUrl endereco(kBase + arquivo);
    QUrlQuery pergunta;
    pergunta.addQueryItem(kPalavras, QString::fromLatin1(QUrl::toPercentEncoding(palavras)));
    endereco.setQuery(pergunta);
    return endereco;
}

QString resultado(const QString& palavras) {
    const std::vector<Manual::Resultado> achados = Manual::procurar(palavras);
    const QString quantas = achados.empty()
                                ? QString("Nenhuma página do manual tem estas palavras.")
                            : achados.size() == 1 ? QString("1 página")
                                                  : QString("%1 páginas").arg(achados.size());
    QString html = QString("<html><head><title>Procura: %1</title></head><body>"
                           "<h1>Procura: %1</h1><p>%2</p>")
                       .arg(palavras.toHtmlEscaped(), quantas);
    for (const Manual::Resultado& achado : achados)
        html += QString("<p><a href=\"%1\">%2</a><br>%3</p>")
                    .arg(com(achado.pagina + kFim, palavras)
                             .toString(QUrl::FullyEncoded)
                             .toHtmlEscaped(),
                         achado.titulo, achado.trecho.toHtmlEscaped());
    return html + "</body></html>";
}

} // namespace

PaginaDeAjuda::PaginaDeAjuda(QWidget* parent) : QTextBrowser(parent) {
    // As wide with a short page as with a long one, or pictures would be wider than what is seen.
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    // Links are gone to by Tab, and followed by Enter.
    setTextInteractionFlags(Qt::TextBrowserInteraction | Qt::TextSelectableByKeyboard);
    connect(this, &QTextBrowser::sourceChanged, this, &PaginaDeAjuda::marcarAchado);
}

void PaginaDeAjuda::abrir(const QString& pagina) { setSource(QUrl(kBase + pagina + kFim)); }

void PaginaDeAjuda::procurar(const QString& palavras) { setSource(com(kProcura, palavras)); }

QString PaginaDeAjuda::pagina() const {
    const QString arquivo = source().fileName();
    return arquivo.endsWith(kFim) ? arquivo.chopped(static_cast<qsizetype>(std::size(kFim)) - 1)
                                  : QString();
}

QVariant PaginaDeAjuda::loadResource(int type, const QUrl& name) {
    const QString arquivo = name.fileName();
    if (type == QTextDocument::ImageResource)
        return figura(arquivo);
    if (type != QTextDocument::HtmlResource)
        return QByteArray(); // a style sheet is for browsers
    if (arquivo == kProcura)
        return resultado(palavrasDe(name));
    return Manual::html(arquivo.chopped(static_cast<qsizetype>(std::size(kFim)) - 1));
}

QImage PaginaDeAjuda::figura(const QString& arquivo) const {
    QImage desenho = Manual::figura(arquivo, palette().color(QPalette::Base).lightness() <
                                                 palette().color(QPalette::Text).lightness());
    const double cabe = std::max(1.0, viewport()->width() - 2 * document()->documentMargin());
    const double densidade = devicePixelRatioF(); // drawn to another size its letters would fray
    desenho = desenho.scaledToWidth(qRound(std::min<double>(desenho.width(), cabe) * densidade),
                                    Qt::SmoothTransformation);
    desenho.setDevicePixelRatio(densidade);
    return desenho;
}

void PaginaDeAjuda::ajustarFiguras() {
    for (QTextBlock bloco = document()->begin(); bloco.isValid(); bloco = bloco.next())
        for (auto parte = bloco.begin(); !parte.atEnd(); ++parte) {
            const QTextImageFormat formato = parte.fragment().charFormat().toImageFormat();
            if (!formato.isValid())
                continue;
            const QUrl nome = document()->baseUrl().resolved(QUrl(formato.name()));
            document()->addResource(QTextDocument::ImageResource, nome, figura(nome.fileName()));
            document()->markContentsDirty(bloco.position(), bloco.length());
        }
}

void PaginaDeAjuda::changeEvent(QEvent* event) {
    QTextBrowser::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        ajustarFiguras();
}

void PaginaDeAjuda::resizeEvent(QResizeEvent* event) {
    QTextBrowser::resizeEvent(event);
    ajustarFiguras();
}

void PaginaDeAjuda::marcarAchado(const QUrl& endereco) {
    ajustarFiguras();
    const QString palavra = bareLetters(palavrasDe(endereco)).section(' ', 0, 0);
    if (palavra.isEmpty() || endereco.fileName() == kProcura)
        return;
    const auto onde = bareLetters(document()->toPlainText()).indexOf(palavra);
    if (onde < 0)
        return;
    QTextCursor cursor(document());
    cursor.setPosition(static_cast<int>(onde));
    cursor.setPosition(static_cast<int>(onde + palavra.size()), QTextCursor::KeepAnchor);
    setTextCursor(cursor);
    ensureCursorVisible();
}

#include "shell/moc_PaginaDeAjuda.cpp"
