#include "shell/CopiaDeSeguranca.h"

#include "jet/Backup.h"
#include "jet/Error.h"

#include <chrono>
#include <exception>

using namespace std::chrono_literals;

CopiaDeSeguranca::CopiaDeSeguranca(std::filesystem::path arquivo, Mostrar mostrar)
    : arquivo_(std::move(arquivo)), mostrar_(std::move(mostrar)) {
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
    try {
        if (const auto copia = jet::Backup(arquivo_).makeIfDue(parada))
            texto = "Cópia de segurança do dia feita: " +
                    QString::fromStdString(copia->filename().string());
    } catch (const std::exception& falha) {
        texto = QString("A cópia de segurança não foi feita. ") + falha.what();
    }
    if (!texto.isEmpty() && !parada.stop_requested())
        QMetaObject::invokeMethod(this, [this, texto] { mostrar_(texto); });
}
