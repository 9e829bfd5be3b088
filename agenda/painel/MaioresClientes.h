#pragma once

#include <QWidget>

#include <cstdint>
#include <optional>
#include <vector>

class Carteira;
class ListView;

/// The clients with most in hand, each with his limit and what is left of it. Enter or a double
/// click opens the sheet of the one on show.
class MaioresClientes final : public QWidget {
    Q_OBJECT
public:
    explicit MaioresClientes(const Carteira& carteira, QWidget* parent = nullptr);

    /// Lists them anew, the current one kept; nobody while not all is summed, or if what the
    /// register says of them can't be read.
    void mostrar();
    /// Takes the room that the letters of today need.
    void arrumar();
    /// That of the current row.
    [[nodiscard]] std::optional<std::int64_t> atual() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void listar();
    void abrirFicha();

    const Carteira& carteira_;
    std::vector<std::int64_t> clientes_; ///< by row of lstclientes
    ListView* lstclientes;
};
