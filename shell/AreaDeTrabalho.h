#pragma once

#include <QMdiArea>

class PainelDoDia;
class QToolButton;

/// The main window's work area: the day's panel or, if that is switched off, plain with the
/// product's mark faint in its middle. Reports open inside it, over all of that: the panel rests as
/// long as there is one.
class AreaDeTrabalho final : public QMdiArea {
    Q_OBJECT
public:
    explicit AreaDeTrabalho(QWidget* parent = nullptr);

    void ligarPainel(bool sim);
    [[nodiscard]] const PainelDoDia& painel() const noexcept { return *painel_; }

signals:
    /// The operator has switched the panel off or on.
    void painelTrocado(bool ligado);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void vestir();
    void trocar(bool sim);
    /// Shows what is to be seen now, and gives it its place.
    void arrumar();

    PainelDoDia* painel_;
    QToolButton* cmdpainel; ///< brings the panel back
    bool ligado_ = true;
};
