#pragma once

#include "jet/Backup.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <atomic>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

/// What is wrong with the database, and what there is to put in its place.
struct Dano {
    QString achado;               ///< a sentence or two
    std::optional<QString> copia; ///< the newest sound copy, empty if there is none; nothing while
                                  ///< the copies are still being looked through
};

/// The shop's daily copy of its database: looked after while the program runs, in a thread of its
/// own, so that nobody waits for it. What came of it is told in one sentence; a failure ends
/// nothing. Errors in the database, whoever has met them, are told as long as they are there.
class CopiaDeSeguranca final : public QObject {
    Q_OBJECT
public:
    using Mostrar = std::function<void(const QString& texto)>;
    using Avisar = std::function<void(const std::optional<Dano>& dano)>;

    /// Looks at once, and from then on every hour, whether today's copy is there. `mostrar` and,
    /// each time, `avisar` are called in the thread that made this object; `avisar` of a damage
    /// twice, the first time as soon as it is known.
    CopiaDeSeguranca(const std::filesystem::path& arquivo, Mostrar mostrar, Avisar avisar);
    /// Breaks off a copy that is being made; takes no longer than a moment.
    ~CopiaDeSeguranca() override;

    /// Looks now, unless it is at it: for who has met errors in the database.
    void verificar();

private:
    void copiar(const std::stop_token& parada);
    /// `achado` is what this look has found, whether or not it could be noted.
    void avisarDoDano(const std::stop_token& parada, std::optional<std::string> achado);
    void noProgramaAberto(const std::stop_token& parada, std::function<void()> dizer);
    /// Says what the thread has handed over: under a mutex of our own, which the thread sanitizer
    /// sees, and not only under Qt's.
    Q_INVOKABLE void dizer();

    jet::Backup copias_; ///< of the thread
    Mostrar mostrar_;
    Avisar avisar_;
    QTimer relogio_;
    std::jthread copia_;
    std::atomic<bool> copiando_{false};
    std::mutex entrega_;
    std::vector<std::function<void()>> ditos_; ///< from the thread, not said yet
};
