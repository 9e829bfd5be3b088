#pragma once

#include <QObject>
#include <QTimer>

#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>

/// The shop's daily copy of its database: looked after while the program runs, in a thread of its
/// own, so that nobody waits for it. What came of it is told in one sentence; a failure ends
/// nothing.
class CopiaDeSeguranca final : public QObject {
    Q_OBJECT
public:
    using Mostrar = std::function<void(const QString& texto)>;

    /// Looks at once, and from then on every hour, whether today's copy is there. `mostrar` is
    /// called in the thread that made this object.
    CopiaDeSeguranca(std::filesystem::path arquivo, Mostrar mostrar);
    /// Breaks off a copy that is being made; takes no longer than a moment.
    ~CopiaDeSeguranca() override;

private:
    void verificar();
    void copiar(const std::stop_token& parada);

    std::filesystem::path arquivo_;
    Mostrar mostrar_;
    QTimer relogio_;
    std::jthread copia_;
    std::atomic<bool> copiando_{false};
};
