#pragma once

#include <QMdiArea>

/// The main window's work area: plain, with the product's mark faint in its middle. Reports open
/// inside it.
class AreaDeTrabalho final : public QMdiArea {
    Q_OBJECT
public:
    explicit AreaDeTrabalho(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void vestir();
};
