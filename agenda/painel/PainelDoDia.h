#pragma once

#include "agenda/painel/Carteira.h"
#include "shell/ClienteMostrado.h"

#include <QDate>
#include <QTimer>
#include <QWidget>

#include <optional>
#include <vector>

class FigureButton;
class GraficoDoDia;
class MaioresClientes;
class QGridLayout;
class QLabel;
class QToolButton;

/// The day at a glance: what is due, late and bounced, what falls due on the days or in the weeks
/// to come, and who has most in hand. Each of these opens its list. It follows the file as long as
/// it is on show, and says that it is still summing until it knows all of it.
///
/// Where there isn't room for everything it leaves out the clients first, then the chart, then the
/// line that tells the keys.
class PainelDoDia final : public QWidget, public ClienteMostrado {
    Q_OBJECT
public:
    /// @param hoje which day it is
    explicit PainelDoDia(QDate (*hoje)() = &QDate::currentDate, QWidget* parent = nullptr);
    ~PainelDoDia() override;

    /// That of the current row of the clients.
    [[nodiscard]] std::optional<std::int64_t> clienteMostrado() const override;

signals:
    /// It was asked to go out of sight.
    void ocultado();

protected:
    bool event(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QWidget* montarCabecalho();
    QWidget* montarFiguras();
    /// Gives each part its place, or leaves it out.
    void arrumar();
    void dispor(int largura);

    void Carteira_Mudou() { mostrar(); }
    void Relogio_Timer();
    void cmdsemfundos_Click();

    void mostrar();
    /// Why there are no sums yet.
    [[nodiscard]] QString espera() const;
    void mostrarFiguras();

    QDate (*hoje_)();
    QDate mostrado_; ///< the day of what is on show

    Carteira carteira_;
    QTimer Relogio{this};

    QLabel* lblemmaos;
    QToolButton* cmdocultar;
    QGridLayout* lugarDasFiguras_;
    int colunas_ = 0;                        ///< of figures
    std::vector<FigureButton*> vencimentos_; ///< as kFiguras
    FigureButton* cmdsemfundos;
    QWidget* cabecalho_;
    QWidget* figuras_;
    GraficoDoDia* grafico_;
    MaioresClientes* maiores_;
    QLabel* lblteclas;
};
