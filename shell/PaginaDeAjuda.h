#pragma once

#include <QTextBrowser>

/// A page of the manual, pictures made to fit its width and in the colours of the program. Follows
/// links and knows the way back; a search is a page too, so that one can go back to it.
class PaginaDeAjuda final : public QTextBrowser {
    Q_OBJECT
public:
    explicit PaginaDeAjuda(QWidget* parent = nullptr);

    void abrir(const QString& pagina);
    void procurar(const QString& palavras);
    /// The page on show; empty while it is a search.
    [[nodiscard]] QString pagina() const;

    QVariant loadResource(int type, const QUrl& name) override;

protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    [[nodiscard]] QImage figura(const QString& arquivo) const;
    void ajustarFiguras();
    /// Where the page was found by words, the first of them is marked.
    void marcarAchado(const QUrl& endereco);
};
