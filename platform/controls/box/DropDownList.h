#pragma once

#include <QComboBox>

#include <cstdint>
#include <optional>

class EntryModel;

/// A drop-down list that can be typed into. It has entries, each with a text and a number (its item
/// data), one of them chosen or none, and a text, which is the chosen entry's or free.
///
/// Typing goes through typeAhead(): the first entry that begins with what stands before the caret
/// and the typed character is chosen; only where none begins exactly so, the first one that does
/// but for its accents: "marc" finds Márcio if there is no Marcos. Where there is none, and with
/// every other change the operator makes to the text, none is chosen and the text is free: nothing
/// is chosen behind his back on leaving.
///
/// Entries are counted from 0; -1 stands for none. 20,000 entries are no burden.
class DropDownList final : public QComboBox {
    Q_OBJECT
public:
    explicit DropDownList(QWidget* parent = nullptr);

    /// Takes out all entries and the text.
    void clear();
    void addItem(const QString& text, std::int64_t number = 0);
    [[nodiscard]] QString itemText(int index) const;
    [[nodiscard]] std::int64_t itemData(int index) const;

    [[nodiscard]] int listIndex() const { return currentIndex(); }
    /// The number of the chosen entry; nothing if none is.
    [[nodiscard]] std::optional<std::int64_t> chosenData() const;
    /// Chooses an entry and shows its text; -1 chooses none and empties the text. Tells no click.
    void setListIndex(int index);

    [[nodiscard]] QString text() const;
    /// Sets a free text: none is chosen, even if an entry has this text.
    void setText(const QString& text);

    /// The wanted text is what stands before the caret (before the marked part, if any) followed by
    /// `typed`. Chooses the first entry that begins with it, without regard to case, or else to
    /// accents: the text becomes the whole entry, the caret goes to just after the typed part, and
    /// the rest is marked, so that typing on overwrites it.
    /// @return false, and nothing changes, if no entry begins so.
    bool typeAhead(const QString& typed);

    /// Chooses the first entry that begins with what stands before the caret followed by `text`,
    /// and shows it with the caret at the beginning. For a text that the program looks for, the
    /// caret stands at the beginning already: it goes there whenever the focus leaves and whenever
    /// the program sets the entry or the text.
    /// @return false, and nothing changes, if no entry begins so.
    bool selectByText(const QString& text);

    /// From now on a sign stands in the box while its text is of no entry. `meaning` is what comes
    /// of that, in a sentence: its tool-tip, and told by screen readers.
    void signUnlisted(const QString& meaning);

signals:
    /// The operator chose an entry: in the open list, with the arrows, or by typing (told when
    /// typing comes to another entry). Choices made by the program are not told.
    void clicked();
    /// The text changed, whoever changed it.
    void changed();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    [[nodiscard]] QString beforeCaret() const;
    struct Found {
        int index;
        int typed; ///< how many characters of the entry are the wanted ones
    };
    [[nodiscard]] std::optional<Found> firstBeginningWith(const QString& wanted) const;
    void chooseNone();
    void updateSign();

    EntryModel* model_;
    QAction* sign_ = nullptr; ///< of a text that is of no entry
    QString described_;       ///< how readers describe it without the sign
};
