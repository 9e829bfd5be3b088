#pragma once

#include "controls/window/Failure.h"
#include "shell/ClienteMostrado.h"

#include <QMainWindow>

#include <cstdint>
#include <memory>
#include <optional>

class AreaDeTrabalho;
class BarraDeStatus;
class CopiaDeSeguranca;
class QToolBar;

namespace Comandos {
struct Comando;
}

/// Main window: every function of the system is reached from its menus and its toolbar. Shows the
/// prompts of the entry windows in its status bar and ends the program in good order.
///
/// What stands in the menus and on the toolbar, and what each choice does, are the tables of
/// Comandos.h; so are the keys that open a window from any other. Place, size and
/// whether the day's panel is on show are remembered from one run to the next in the user's own
/// settings.
class MDICheques final : public QMainWindow, public ClienteMostrado {
    Q_OBJECT
public:
    MDICheques();
    ~MDICheques() override;
    /// The one main window, made on first use.
    static MDICheques& instance();
    /// Has the prompts of all windows shown here; the first prompt makes the window if there is
    /// none.
    static void mostrarMensagens();

    /// Shows a window inside this one, filling the work area, and brings it to the front.
    void mostrarDentro(QWidget& janela);

    /// That of the day's panel.
    [[nodiscard]] std::optional<std::int64_t> clienteMostrado() const override;

    /// From now on looks after the daily copy of the open database; its news are shown in the
    /// status bar, and errors in the database as long as there are any.
    void cuidarDaCopia();
    /// Breaks off a copy that is being made, and makes none any more.
    void largarCopia();
    /// Shows at once that the database has errors, and has the whole of it checked.
    void conferirArquivo(const QString& achado);
    /// Says what the opening of the database has found and why nothing can be saved, if so.
    void avisar();

    /// Closes the data and ends the program at once, whatever windows are open.
    /// What can't be written is told, and the program goes on; who asks again at once, without
    /// other work in between, ends it without that. @throws jet::Error then.
    void encerrar();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void montarMenus();
    void montarFerramentas();
    void virParaFrente();
    void lembrarLugar();
    void executar(const Comandos::Comando* comando);
    void Toolbar1_ButtonClick(const QString& chave);
    /// Whether the program may end now: all is written, or that has been tried in vain before.
    [[nodiscard]] bool podeEncerrar();

    AreaDeTrabalho* area_;
    QToolBar* Toolbar1;
    BarraDeStatus* StatusBar1;
    std::unique_ptr<CopiaDeSeguranca> copia_;
    bool encerrado_ = false;
    /// What the file said to be written when the end failed; nothing if other work came after.
    std::optional<std::uint64_t> tentadoCom_;
};
