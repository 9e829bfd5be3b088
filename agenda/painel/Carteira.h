#pragma once

#include "agenda/Vencimentos.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QTimer>

#include <memory>
#include <vector>

class SomasDaCarteira;

/// All cheques in hand of the open database, summed by due date and by client, and kept up with:
/// read once in the background, in short pieces; after that only what has changed, here or by
/// others, at the latest two seconds after it was written.
class Carteira final : public QObject {
    Q_OBJECT
public:
    using DeUmCliente = Vencimentos::DeUmCliente;

    explicit Carteira(QObject* parent = nullptr);
    ~Carteira() override;

    /// Follows the open database, or rests (nobody looks): resting costs nothing, and what was
    /// summed is kept.
    void acompanhar(bool sim);
    /// Whether what follows is of the whole file; before that, and where the file is damaged or
    /// lacks what is summed, it is nothing to show.
    [[nodiscard]] bool completa() const noexcept { return completa_; }
    /// Whether the last try to read has failed; there will be others.
    [[nodiscard]] bool falhou() const noexcept { return falhou_; }
    /// How much of the first reading is done, 0 to 1.
    [[nodiscard]] double andamento() const;

    [[nodiscard]] Vencimentos::Soma devidos(const Vencimentos::Dias& dias) const;
    [[nodiscard]] Vencimentos::Soma emMaos() const;
    /// Bounced and still open.
    [[nodiscard]] Vencimentos::Soma semFundos() const;
    /// Those with most in hand, the largest first; equal ones by code.
    [[nodiscard]] std::vector<DeUmCliente> maiores(std::size_t quantos) const;

signals:
    /// The sums are others than before, or the first reading has ended.
    void mudou();

private:
    void olhar();
    [[nodiscard]] bool podeLer();
    void concluir();

    QTimer relogio_;
    QTimer passo_;         ///< to the next piece of what is being read
    QDeadlineTimer pausa_; ///< after a failure
    int esperas_ = 0;      ///< for another station, in a row
    bool acompanha_ = false;
    bool completa_ = false;
    bool falhou_ = false;
    std::unique_ptr<SomasDaCarteira> somas_; ///< null without a database to be read
};
