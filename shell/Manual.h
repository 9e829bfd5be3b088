#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

class QImage;
class QPagedPaintDevice;
class QTextDocument;

/// The manual that the program carries: pages and pictures, found, searched and put on paper.
/// A page is named by its file without the ending.
namespace Manual {

/// In the order of reading; the first is the index.
[[nodiscard]] const QStringList& paginas();
/// As HTML; empty if there is no such page.
[[nodiscard]] QString html(const QString& pagina);
/// Its first heading.
[[nodiscard]] QString titulo(const QString& pagina);
/// A picture of the manual, in dark colours if it is to be and has them.
[[nodiscard]] QImage figura(const QString& arquivo, bool escura);

/// The page that tells of a window, by the window's name; empty if none does.
[[nodiscard]] QString paginaDe(const QString& janela);

struct Resultado {
    QString pagina;
    QString titulo;
    QString trecho; ///< around the first of the words
};
/// The pages that have all the words, whatever their case and accents, those first that have one in
/// their heading; else in the order of reading; not the index. None for no words.
[[nodiscard]] std::vector<Resultado> procurar(const QString& palavras);

/// Pages for paper, each on a new sheet, pictures no wider than that and without links.
[[nodiscard]] std::unique_ptr<QTextDocument> paraPapel(const QStringList& paginas);
/// The first heading, from that block on, that would stand at the foot of a sheet of `papel` while
/// what it heads is on the next; its block's number.
[[nodiscard]] std::optional<int> tituloNoPe(const QTextDocument& texto, QPagedPaintDevice& papel,
                                            int desde = 0);
/// Has each of these begin the next sheet.
void manterTitulos(QTextDocument& texto, QPagedPaintDevice& papel);

} // namespace Manual
