#pragma once

#include <QLineEdit>
#include <QStringList>

#include <limits>

/// A box for a number with signs in fixed places: postal code "99999-999", telephone
/// "(99) 9999-9999". The operator types digits, the signs come by themselves; other characters and
/// digits beyond the longest mask are refused.
///
/// Its text(), signs included, is what it shows and what is stored. A text set by the program is
/// shown as it stands even if it fits no mask, as other systems may have stored it, and is not
/// touched unless the operator edits it.
class ActiveText final : public QLineEdit {
    Q_OBJECT
    Q_PROPERTY(QString masks READ masks WRITE setMasks)
public:
    explicit ActiveText(QWidget* parent = nullptr);

    /// Masks from the shortest to the longest, parted by ";": "(99) 9999-9999;(99) 99999-9999". A 9
    /// stands for a digit, all else for itself. The first mask with room for the digits is used.
    void setMasks(const QString& masks);
    /// How many characters can be stored, signs included; any number at first. Where a mask needs
    /// more than that, the digits stand without signs, as many as there is room for.
    void setRoom(int characters) { room_ = characters; }
    [[nodiscard]] QString masks() const { return masks_.join(';'); }

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void applyMask();
    [[nodiscard]] QString masked(const QString& digits) const;
    /// How many digits can be typed.
    [[nodiscard]] qsizetype digits() const;
    [[nodiscard]] bool fitsSigns(const QString& text) const;

    QStringList masks_;
    int room_ = std::numeric_limits<int>::max();
    /// The text before the edit at work.
    QString before_;
};
