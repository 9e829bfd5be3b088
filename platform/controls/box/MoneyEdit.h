#pragma once

#include "controls/typing/Formato.h"

#include <QLineEdit>

/// A box for an amount, right-aligned. Left, it shows "1.234,56"; entered, "1234,56" and all of it
/// marked, ready to be typed over.
///
/// Takes digits, a comma, a minus at the front and points between thousands, as far as an amount
/// can come of it; the keypad's decimal key gives the comma. What can't be an amount, is out of
/// range or has too many decimals is refused as it is typed or pasted. A pasted amount may be
/// dressed in any way that parseMoney() reads.
///
/// Invariant: the text is an amount, or the beginning of one ("", "-", ","), which counts as 0.
/// In a box that is only for showing it is valor() rounded.
class MoneyEdit final : public QLineEdit {
    Q_OBJECT
    Q_PROPERTY(int decimals READ decimals WRITE setDecimals)
public:
    explicit MoneyEdit(QWidget* parent = nullptr);

    /// What was typed amounts to as it stands, 0 for an empty text; or what setValor() gave.
    [[nodiscard]] Amount valor() const noexcept { return valor_; }
    /// Any amount. A box that can be typed into shows it exactly, with four decimals if it has
    /// them, since what it shows is what is saved; one that is only for showing rounds it to two.
    /// Tells changed() if it differs.
    void setValor(Amount valor);

    [[nodiscard]] int decimals() const noexcept { return decimals_; }
    /// How many decimals can be typed, 0 to 4; 2 at first. The program may set four all the same.
    void setDecimals(int decimals);

signals:
    /// valor() changed, by the operator or by the program.
    void changed();

protected:
    void changeEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    friend class MoneyValidator;

    void show(Amount valor);
    void readText();
    void take(Amount valor);

    Amount valor_;
    int decimals_ = kShownDecimals;
    int decimalsInText_ = 0;
    bool showing_ = false; ///< the text comes from valor_, not the other way round
    bool entered_ = false;
    bool enteredByMouse_ = false;
};
