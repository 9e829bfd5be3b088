#include "shell/Manual.h"

#include "controls/typing/Accents.h"

#include <QAbstractTextDocumentLayout>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPagedPaintDevice>
#include <QRegularExpression>
#include <QScreen>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>

#include <algorithm>

// Outside any namespace: Q_INIT_RESOURCE declares what it calls where it stands.
static void registerManual() { Q_INIT_RESOURCE(manual); }

namespace Manual {

namespace {

// Pixels of the screen, 96 to the inch. A picture that would be too small to read at the width of
// the others gets all that the paper has.
constexpr int kLarguraNoPapel = 480;
constexpr int kMaiorLarguraNoPapel = 610;
constexpr double kReducao = 820.0 / kLarguraNoPapel; ///< the clients' window, to be read with ease
constexpr double kMargemCm = 2;                      ///< as QTextDocument::print() has it
constexpr qsizetype kTrecho = 70; ///< characters, before and behind what was found

struct Assunto {
    const char* janela;
    const char* pagina;
};
constexpr Assunto kAssuntos[] = {
    {"MDICheques",        "principal" },
    {"frmCliFor",         "clientes"  },
    {"frmlocalizar",      "localizar" },
    {"frmBancos",         "bancos"    },
    {"FrmLancarCheques",  "entrada"   },
    {"FrmLocCHTerceiros", "baixa"     },
    {"FrmLancasSFundos",  "sem-fundos"},
    {"FrmRenegociar",     "renegociar"},
    {"FrmConsultaCH",     "consulta"  },
    {"FrmAgenda",         "agenda"    },
    {"FrmBordero",        "bordero"   },
    {"FrmFicha",          "ficha"     },
    {"FrmHistorico",      "historico" },
    {"FrmFiltroRelat",    "relatorios"},
    {"frmRel_ChequesSF",  "visualizar"},
    {"frm_Msg",           "visualizar"},
    {"JanelaDeImpressao", "visualizar"},
    {"FrmApagar",         "apagar"    },
    {"frmcaminho",        "diretorio" },
    {"frmAbout",          "sobre"     },
    {"FrmAjuda",          "ajuda"     },
};

QByteArray conteudo(const QString& arquivo) {
    registerManual();
    QFile file(":/manual/" + arquivo);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString textoDe(const QString& pagina) {
    QTextDocument documento;
    documento.setHtml(html(pagina));
    return documento.toPlainText();
}

/// Between the page's head and the way back to the index.
QString corpo(const QString& pagina) {
    const QString tudo = html(pagina);
    const auto inicio = tudo.indexOf("<body>");
    return tudo.mid(inicio, tudo.lastIndexOf("<hr>") - inicio);
}

/// A picture as wide as paper wants it.
QImage desenhoNoPapel(const QString& arquivo) {
    QImage desenho = figura(arquivo, false);
    const double natural = desenho.width();
    const double largura =
        std::clamp(natural / kReducao, std::min<double>(natural, kLarguraNoPapel),
                   double{kMaiorLarguraNoPapel});
    desenho.setDevicePixelRatio(std::max(1.0, natural / largura));
    return desenho;
}

/// All pictures, so that a copy of the text has them too.
void trazerDesenhos(QTextDocument& papel) {
    for (QTextBlock bloco = papel.begin(); bloco.isValid(); bloco = bloco.next())
        for (auto parte = bloco.begin(); !parte.atEnd(); ++parte)
            if (const auto formato = parte.fragment().charFormat(); formato.isImageFormat()) {
                const QUrl nome(formato.toImageFormat().name());
                papel.addResource(QTextDocument::ImageResource, nome,
                                  desenhoNoPapel(nome.fileName()));
            }
}

} // namespace

const QStringList& paginas() {
    static const QStringList ordem =
        QString::fromUtf8(conteudo("order")).split('\n', Qt::SkipEmptyParts);
    return ordem;
}

QString html(const QString& pagina) { return QString::fromUtf8(conteudo(pagina + ".html")); }

QString titulo(const QString& pagina) {
    static const QRegularExpression title("<title>([^<]*)</title>");
    return title.match(html(pagina)).captured(1);
}

QImage figura(const QString& arquivo, bool escura) {
    const QString outra = QString(arquivo).replace("-light-", "-dark-");
    return QImage::fromData(conteudo(escura ? outra : arquivo));
}

QString paginaDe(const QString& janela) {
    const auto* assunto = std::ranges::find(kAssuntos, janela, &Assunto::janela);
    return assunto == std::end(kAssuntos) ? QString() : assunto->pagina;
}

std::vector<Resultado> procurar(const QString& palavras) {
    const QStringList procuradas =
        bareLetters(palavras.simplified()).split(' ', Qt::SkipEmptyParts);
    std::vector<Resultado> achados;
    if (procuradas.isEmpty())
        return achados;
    std::vector<Resultado> noTitulo;
    for (const QString& pagina : paginas().mid(1)) { // the index has the words of every heading
        const QString texto = textoDe(pagina);
        const QString letras = bareLetters(texto);
        if (!std::ranges::all_of(procuradas, [&](const QString& p) { return letras.contains(p); }))
            continue;
        const QString cabecalho = titulo(pagina);
        const bool nele = bareLetters(cabecalho).contains(procuradas.first());
        // In a heading the word says nothing that the page's name doesn't.
        auto onde = letras.indexOf(procuradas.first(), nele ? cabecalho.size() : 0);
        onde = std::max<qsizetype>(onde, 0);
        // From the beginning of a word.
        const auto inicio = onde < kTrecho ? 0 : texto.lastIndexOf(' ', onde - kTrecho) + 1;
        const auto fim = texto.indexOf(' ', std::min(onde + kTrecho, texto.size()));
        const QString trecho = texto.mid(inicio, fim < 0 ? -1 : fim - inicio).simplified();
        (nele ? noTitulo : achados).push_back({pagina, cabecalho, trecho});
    }
    achados.insert(achados.begin(), noTitulo.begin(), noTitulo.end());
    return achados;
}

std::unique_ptr<QTextDocument> paraPapel(const QStringList& paginas) {
    static const QRegularExpression link("</?a\\b[^>]*>");
    QString tudo;
    for (const QString& pagina : paginas) {
        const QString parte = corpo(pagina).remove(link).remove("<body>");
        tudo += tudo.isEmpty()
                    ? parte
                    : QString(parte).replace("<h1>", "<h1 style=\"page-break-before:always\">");
    }
    auto papel = std::make_unique<QTextDocument>();
    papel->setHtml(tudo);
    trazerDesenhos(*papel);
    papel->setMetaInformation(QTextDocument::DocumentTitle, "Manual do Valtrino");
    return papel;
}

std::optional<int> tituloNoPe(const QTextDocument& texto, QPagedPaintDevice& papel, int desde) {
    // As QTextDocument::print() lays it out.
    const std::unique_ptr<QTextDocument> prova(texto.clone());
    prova->documentLayout()->setPaintDevice(&papel);
    QTextFrameFormat folha = prova->rootFrame()->frameFormat();
    // In dots of the screen, which the layout turns into those of the paper.
    const double pontos = QGuiApplication::primaryScreen()->logicalDotsPerInchY();
    folha.setMargin(static_cast<int>(kMargemCm / 2.54 * pontos));
    prova->rootFrame()->setFrameFormat(folha);
    prova->setPageSize(QSizeF(papel.width(), papel.height()));
    static_cast<void>(prova->pageCount()); // now all of it is laid out
    const auto pagina = [&](const QTextBlock& bloco) {
        const double linha = bloco.layout()->lineCount() > 0 ? bloco.layout()->lineAt(0).y() : 0.0;
        const double y = prova->documentLayout()->blockBoundingRect(bloco).top() + linha;
        return static_cast<int>(y / papel.height());
    };
    for (QTextBlock bloco = prova->findBlockByNumber(desde); bloco.next().isValid();
         bloco = bloco.next())
        if (bloco.blockFormat().headingLevel() > 0 && pagina(bloco) < pagina(bloco.next()))
            return bloco.blockNumber();
    return std::nullopt;
}

void manterTitulos(QTextDocument& texto, QPagedPaintDevice& papel) {
    for (auto titulo = tituloNoPe(texto, papel); titulo;
         titulo = tituloNoPe(texto, papel, *titulo + 1)) {
        QTextBlockFormat folhaNova;
        folhaNova.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        QTextCursor(texto.findBlockByNumber(*titulo)).mergeBlockFormat(folhaNova);
    }
}

} // namespace Manual
