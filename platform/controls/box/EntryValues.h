#pragma once

#include <QString>

#include <functional>
#include <vector>

class QWidget;

/// What stands in the entry controls of a window at one moment: text boxes, drop-down lists, check
/// boxes, money and date boxes. To be compared with another moment, and put back.
class EntryValues {
public:
    explicit EntryValues(const QWidget& window);

    /// Puts back what the operator can change; a box that is only for showing keeps what it has.
    void restore() const;

    /// A control that holds something else at the two moments.
    struct Difference {
        QWidget* control;
        QString name; ///< of the control, as its label says it
        QString here;
        QString there;
        bool changeable; ///< by the operator
    };
    /// The named controls that `other`, of the same window, has otherwise, in the order of the
    /// fields.
    [[nodiscard]] std::vector<Difference> differencesTo(const EntryValues& other) const;

private:
    struct Entry {
        QWidget* control;
        QString name;
        QString text;
        bool changeable;
        std::function<void()> restore;
    };
    std::vector<Entry> entries_;
};
