#pragma once

#include <QStatusBar>
#include <QTimer>

#include <optional>

struct Dano;
class QLabel;
class QToolButton;

/// Foot of the main window: the prompt of the field in use, news, what is
/// wrong with the database and why nothing can be saved, as long as that is so, date and time.
class BarraDeStatus final : public QStatusBar {
    Q_OBJECT
public:
    BarraDeStatus();

    void mostrarMensagem(const QString& texto);
    void mostrarNoticia(const QString& texto);
    /// Looks whether anything can be saved now; done every few seconds anyhow.
    void mostrarConsulta();
    void mostrarDano(const std::optional<Dano>& dano);

private:
    QToolButton* montarAviso(const char* nome, const char* texto, const char* imagem);
    void consulta_Click();
    void lerAvisos();
    void dano_Click();
    void Relogio_Timer();

    QLabel* mensagem_;
    QLabel* noticia_; ///< on show once there is any
    QLabel* aviso_;   ///< heard, not seen: what those below say by coming up
    QLabel* data_;
    QToolButton* dano_ = nullptr;     ///< on show while the database has errors; says which
    QString socorro_;                 ///< and what helps
    QToolButton* consulta_ = nullptr; ///< on show while nothing can be saved; says why
    QTimer Relogio;
    int segundos_ = 0;
};
