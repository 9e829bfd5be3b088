#pragma once

#include "agenda/Vencimentos.h"

#include <QDate>
#include <QWidget>

#include <vector>

class BarChart;
class Carteira;
class QLabel;
class QPushButton;

/// What falls due on each of the days to come, or in each of the weeks: bars under a caption that
/// says which, and beside it what the current bar says. A bar opens its days in the agenda.
class GraficoDoDia final : public QWidget {
    Q_OBJECT
public:
    explicit GraficoDoDia(const Carteira& carteira, QWidget* parent = nullptr);

    /// From `hoje` on; no bars while not all is summed.
    void mostrar(QDate hoje);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void cmdgrafico_Click();
    void grfvencimentos_Click(int barra);
    /// What the current bar says, if there is room for all of it.
    void mostrarBarra();

    const Carteira& carteira_;
    QDate hoje_;
    bool porSemana_ = false;
    std::vector<Vencimentos::Dias> barras_;

    QLabel* lblgrafico;
    QLabel* lblbarra;
    QPushButton* cmdgrafico;
    BarChart* grfvencimentos;
};
