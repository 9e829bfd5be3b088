#include "shell/CopiaDeSeguranca.h"

#include "jet/Error.h"

#include <chrono>
#include <exception>
#include <utility>

using namespace std::chrono_literals;

CopiaDeSeguranca::CopiaDeSeguranca(const std::filesystem::path& arquivo, Mostrar mostrar,
                                   Avisar avisar)
    : copias_(arquivo), mostrar_(std::move(mostrar)), avisar_(std::move(avisar)) {
    connect(&relogio_, &QTimer::timeout, this, &CopiaDeSeguranca::verificar);
    relogio_.start(1h);
    verificar();
}

CopiaDeSeguranca::~CopiaDeSeguranca() {
    copia_.request_stop();
    if (copia_.joinable())
        copia_.join(); // before anything that the thread uses goes
}

void CopiaDeSeguranca::verificar() {
    if (copiando_.exchange(true))
        return;
    copia_ = std::jthread([this](const std::stop_token& parada) {
        copiar(parada);
        copiando_ = false;
    });
}

void CopiaDeSeguranca::copiar(const std::stop_token& parada) {
    QString texto;
    std::optional<std::string> achado;
    try {
        if (copias_.damage())
            avisarDoDano(parada, {}); // what is known isn't kept back while the file is read
        if (const auto copia = copias_.makeIfDue(parada))
            texto = "Cópia de segurança do dia feita: " +
                    QString::fromStdString(copia->filename().string());
    } catch (const jet::Error& falha) {
        if (falha.code() == jet::Errc::corrupt)
            achado = falha.what();
        texto = QString("A cópia de segurança não foi feita. ") + falha.what();
    } catch (const std::exception& falha) {
        texto = QString("A cópia de segurança não foi feita. ") + falha.what();
    }
    if (!texto.isEmpty())
        noProgramaAberto(parada, [this, texto] { mostrar_(texto); });
    try {
        avisarDoDano(parada, achado);
    } catch (const std::exception&) { // NOLINT(bugprone-empty-catch)
        // The folder of the copies can't be read: that has been told.
    }
}

void CopiaDeSeguranca::avisarDoDano(const std::stop_token& parada,
                                    std::optional<std::string> achado) {
    if (const auto anotado = copias_.damage())
        achado = anotado;
    std::optional<Dano> dano;
    if (achado) {
        dano = {QString::fromStdString(*achado), std::nullopt};
        noProgramaAberto(parada, [this, dano] { avisar_(dano); });
        const auto copia = copias_.newestSound(parada);
        dano->copia = copia ? QString::fromStdString(copia->string()) : QString();
    }
    noProgramaAberto(parada, [this, dano] { avisar_(dano); });
}

void CopiaDeSeguranca::noProgramaAberto(const std::stop_token& parada,
                                        std::function<void()> dizer) {
    if (parada.stop_requested())
        return;
    {
        const std::lock_guard trinco(entrega_);
        ditos_.push_back(std::move(dizer));
    }
    QMetaObject::invokeMethod(this, "dizer", Qt::QueuedConnection);
}

void CopiaDeSeguranca::dizer() {
    std::vector<std::function<void()>> ditos;
    {
        const std::lock_guard trinco(entrega_);
        ditos.swap(ditos_);
    }
    for (const auto& dito : ditos)
        dito();
}

#include "shell/moc_CopiaDeSeguranca.cpp"
