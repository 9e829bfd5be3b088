#include "shell/Manual.h"

#include "controls/typing/Accents.h"

#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTextDocument>

#include <algorithm>

// Outside any namespace: Q_INIT_RESOURCE declares what it calls where it stands.
static void registerManual() { Q_INIT_RESOURCE(manual); }

namespace Manual {

namespace {

constexpr int kLarguraNoPapel = 480; ///< pixels of the screen, 96 to the inch
constexpr qsizetype kTrecho = 70;    ///< characters, before and behind what was found

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

class Papel final : public QTextDocument {
protected:
    QVariant loadResource(int type, const QUrl& name) override {
        if (type != ImageResource)
            return {};
        QImage desenho = figura(name.fileName(), false);
        desenho.setDevicePixelRatio(
            std::max(1.0, static_cast<double>(desenho.width()) / kLarguraNoPapel));
        return desenho;
    }
};

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
    auto papel = std::make_unique<Papel>();
    papel->setHtml(tudo);
    papel->setMetaInformation(QTextDocument::DocumentTitle, "Manual do Valtrino");
    return papel;
}

} // namespace Manual
