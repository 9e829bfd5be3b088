#pragma once

#include "ado/Recorder.h"
#include "ado/Recordset.h"
#include "schema/ShopSchema.h"

#include <QString>

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace ado {
class Connection;
}

/// What was done with the cheques, row by row, in a table of the same file: who, when, what, and
/// the whole row before and after it. It is stored with the change itself or not at all.
///
/// Recorded are received cheques that are changed or deleted, and bounced ones, new ones too; and
/// with a cheque all that goes along with it by a relationship, or that it goes along with, in
/// whatever table. Rows that one Operacao has changed share a number, `grupo`, and so do those of
/// one change; within it each stands before the one that it has followed.
///
/// The table is made by the first such change; on a server it is there from the beginning, as a
/// clerk makes none there. Where the file doesn't let the history be kept (a
/// table of that name is another program's, or may not be changed) the shop's work goes on without,
/// and that is told once; a full disk or another station refuse both.
class Historico final : public ado::Recorder {
public:
    static constexpr const char* kTabela = shop::kHistory;
    /// A file that has this table keeps no history: see valtrino-mdb.
    static constexpr const char* kDesligado = shop::kNoHistory;

    // What can be done with a cheque.
    static constexpr char kAlteracao[] = "alteração";
    static constexpr char kBaixa[] = "baixa";
    static constexpr char kBordero[] = "borderô"; ///< of which no row is changed
    static constexpr char kDesfazer[] = "desfazer";
    static constexpr char kExclusao[] = "exclusão";
    static constexpr char kExpurgo[] = "expurgo";
    static constexpr char kRenegociacao[] = "renegociação";
    static constexpr char kSemFundos[] = "sem fundos";

    /// Outlives the connection's being open.
    explicit Historico(ado::Connection& base) : base_(base) {}
    Historico(const Historico&) = delete;
    Historico& operator=(const Historico&) = delete;

    /// All that is changed through the connection while one lives is called so, and belongs
    /// together. Without one each row stands for itself, and is called by what happens to it. Not
    /// nested.
    class Operacao {
    public:
        /// `grupo`: its number, if that has been found to be nobody's; 0: one is looked for.
        Operacao(Historico& historico, const char* nome, std::int32_t grupo = 0);
        Operacao(const Operacao&) = delete;
        Operacao& operator=(const Operacao&) = delete;
        ~Operacao();
        /// The number of what it has changed; 0 if that is nothing yet.
        [[nodiscard]] std::int32_t grupo() const { return historico_.grupo_; }

    private:
        Historico& historico_;
    };

    /// A number for an operation, which another may have by chance.
    [[nodiscard]] static std::int32_t sortear();

    /// Makes the table where the file has none yet. That is written at once, which a transaction
    /// that may be written later would be with it: before such a one begins.
    void comecar();
    /// Where it is told why no history is kept.
    void aoAvisar(std::function<void(const QString&)> avisar);
    /// Why none is kept by this program, since it has tried; "" if that isn't so.
    [[nodiscard]] const QString& impedimento() const noexcept { return impedimento_; }
    /// Whether the table is there and has all of its fields.
    [[nodiscard]] bool legivel() const;
    /// Whether a table is of those whose changes are recorded by themselves: the cheques.
    [[nodiscard]] static bool eDeCheques(std::string_view tabela);

    /// Keeps that a deposit slip was made: its number, its sum and, if it is in the file, the bank.
    /// Not where no history is kept, or the file is only read. @throws what storing throws.
    void anotarBordero(const QString& numero, ado::Currency soma,
                       const std::optional<std::int64_t>& banco);

    [[nodiscard]] bool keeps(const ado::TableShape& table, bool isNew) override;
    void changed(std::span<const Change> rows) override;

private:
    bool pronto();
    void preparar();
    /// Begins a record, whoever made it and when in it.
    void abrirRegistro(std::int32_t grupo, const char* operacao);
    void gravar(std::int32_t grupo, const char* operacao, const Change& row);
    [[nodiscard]] bool desfazendo() const noexcept;
    template <class Trabalho>
    bool semParar(Trabalho&& trabalho);
    [[nodiscard]] std::int32_t novoGrupo();

    ado::Connection& base_;
    ado::Recordset rs_;                                     ///< the history, to add to
    std::map<std::string, ado::Field, std::less<>> campos_; ///< of that
    const void* tabela_ = nullptr;                          ///< that it is open on
    const char* operacao_ = nullptr;                        ///< of the Operacao that lives
    std::int32_t grupo_ = 0;                                ///< its rows', once there are any
    QString impedimento_;
    std::function<void(const QString&)> avisar_;
};
