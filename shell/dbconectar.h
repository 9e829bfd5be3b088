#pragma once

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "shell/Historico.h"

#include <QString>
#include <QStringList>

/// The one way to the shop's data: the connection and the four recordsets that stay open for the
/// life of the program. Windows move, find, filter and write through these; for anything else they
/// open a recordset of their own on `Automacao`.
///
/// Made on first use from Mirtal::DatabaseFolder, which must be known by then; a folder
/// chosen later counts from the next start on.
class dbconectar final {
public:
    static dbconectar& instance();
    /// Destroys the object: whatever is open is closed, an open transaction is rolled back. For who
    /// ends the program; a use after that makes a new one.
    static void descartar();

    dbconectar(const dbconectar&) = delete;
    dbconectar& operator=(const dbconectar&) = delete;
    ~dbconectar();

    /// Opens the recordsets, and the connection with the first. Of a file that lacks some of their
    /// tables the others are opened: see faltas(). From then on no message waits for its answer
    /// with something unwritten that other stations would have to wait for.
    /// @throws jet::Error, with a sentence that names the file tried and where its folder is set.
    void abrir();
    /// What the server asks for, now or at the next abrir(). It is kept in the connection alone.
    void setSenha(const QString& senha);
    /// What of the shop's tables the data lacks: of a file every table and field, by name; of a
    /// server what abrir() has met, a sentence each. The recordsets concerned say it too, whenever
    /// anything is asked of them.
    [[nodiscard]] const QStringList& faltas() const { return faltas_; }
    /// Whether abrir() has succeeded and fechar() not been called since.
    [[nodiscard]] bool aberto() const;
    /// Undoes what was being saved: an open transaction, edits that are still pending.
    /// @return whether something was, or had been undone already since this was last called.
    bool desfazer();
    /// Writes all that waits to be written. Says nothing where that fails: it waits on then, keeps
    /// no other station waiting, and is tried again by Gravacao.
    /// @return whether nothing is left to be written.
    bool gravarPendentes() noexcept;
    /// That changes were undone for good was found by one who has nobody to tell it to.
    void anotarPerdido(const QString& motivo) { perdido_ = motivo; }
    /// What gravarPendentes() or another has found undone for good and the operator hasn't been
    /// told yet; "" for nothing. Once.
    [[nodiscard]] QString perdido();
    /// Closes rsCheques, rsCliente, rsBancos, rsSemFundos and the connection, in this order.
    void fechar();

    // Before what records in it.
    Historico historico{Automacao};
    // Before the recordsets: these go first.
    ado::Connection Automacao;
    ado::Recordset
        rsCliente;           ///< clients only: the back-office system keeps suppliers there as well
    ado::Recordset rsBancos; ///< `nome` goes by "banco" as well
    ado::Recordset rsCheques;
    ado::Recordset rsSemFundos;

private:
    dbconectar();

    QStringList faltas_;
    bool aberto_ = false;
    QString perdido_;
};
