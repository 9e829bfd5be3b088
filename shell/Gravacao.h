#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>

/// Writes what was deleted or settled and waits to be written, while the operator does nothing or
/// reads a message. That it can't be written is said once, as soon as no other message is on show,
/// and tried again without end; that another station has made it impossible is said too.
class Gravacao final : public QObject {
public:
    explicit Gravacao(std::chrono::milliseconds intervalo);

private:
    void tentar();
    void dizer();

    QTimer relogio_;
    bool falhou_ = false; ///< and it has been said, or is about to be
    QString naoDita_;
};
