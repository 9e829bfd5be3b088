#include "controls/box/DropDownList.h"

#include "controls/look/Icons.h"
#include "controls/look/Spoken.h"
#include "controls/typing/Accents.h"
#include "controls/typing/Typing.h"

#include <QAbstractListModel>
#include <QAction>
#include <QLineEdit>
#include <QListView>
#include <QSignalBlocker>
#include <QWheelEvent>

#include <utility>
#include <vector>

/// The entries of a DropDownList.
class EntryModel final : public QAbstractListModel {
public:
    struct Entry {
        QString text;
        std::int64_t data;
    };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] const std::vector<Entry>& entries() const noexcept { return entries_; }

    void add(Entry entry) {
        const int row = rowCount({});
        beginInsertRows({}, row, row);
        entries_.push_back(std::move(entry));
        endInsertRows();
    }

    void clear() {
        beginResetModel();
        entries_.clear();
        endResetModel();
    }

    [[nodiscard]] int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(entries_.size());
    }

    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole && role != Qt::EditRole)
            return {};
        return index.isValid() ? entries_[static_cast<std::size_t>(index.row())].text : QVariant();
    }

    // Designer fills a list by adding empty entries and giving them their texts.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override {
        if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::EditRole))
            return false;
        entries_[static_cast<std::size_t>(index.row())].text = value.toString();
        emit dataChanged(index, index, {role});
        return true;
    }

private:
    std::vector<Entry> entries_;
};

namespace {

constexpr int kShownEntries = 15;
constexpr int kNarrowest = 10; // characters

} // namespace

DropDownList::DropDownList(QWidget* parent) : QComboBox(parent), model_(new EntryModel(this)) {
    setEditable(true);
    setInsertPolicy(NoInsert);
    setCompleter(nullptr);
    setModel(model_);
    setMaxVisibleItems(kShownEntries);
    setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(kNarrowest);
    if (auto* list = qobject_cast<QListView*>(view())) {
        list->setUniformItemSizes(true);
        list->setLayoutMode(QListView::Batched);
    }
    // A combo box would choose, on leaving, an entry that happens to have the text.
    disconnect(lineEdit(), &QLineEdit::editingFinished, this, nullptr);
    connect(lineEdit(), &QLineEdit::textEdited, this, &DropDownList::chooseNone);
    connect(lineEdit(), &QLineEdit::textChanged, this, &DropDownList::changed);
    // Qt tells it of the line of text, which for readers is no control of its own.
    connect(lineEdit(), &QLineEdit::textChanged, this,
            [this](const QString& now) { tellText(*this, now); });
    connect(this, &QComboBox::activated, this, [this] {
        lineEdit()->setSelection(static_cast<int>(text().size()), -static_cast<int>(text().size()));
        emit clicked();
    });
}

void DropDownList::clear() {
    model_->clear();
    setText("");
}

void DropDownList::addItem(const QString& text, std::int64_t number) {
    const bool none = currentIndex() < 0;
    const QString typed = this->text();
    const QSignalBlocker quiet(lineEdit());
    model_->add({text, number});
    if (none && currentIndex() >= 0) // a combo box chooses its first entry by itself
        setText(typed);
}

QString DropDownList::itemText(int index) const {
    return model_->entries().at(static_cast<std::size_t>(index)).text;
}

std::int64_t DropDownList::itemData(int index) const {
    return model_->entries().at(static_cast<std::size_t>(index)).data;
}

std::optional<std::int64_t> DropDownList::chosenData() const {
    return listIndex() < 0 ? std::nullopt : std::optional(itemData(listIndex()));
}

void DropDownList::setListIndex(int index) {
    setCurrentIndex(index);
    setEditText(index < 0 ? QString() : itemText(index));
    lineEdit()->setCursorPosition(0);
}

QString DropDownList::text() const { return lineEdit()->text(); }

void DropDownList::setText(const QString& text) {
    {
        const QSignalBlocker quiet(lineEdit());
        const QString before = this->text();
        setCurrentIndex(-1);
        setEditText(before);
    }
    setEditText(text);
    lineEdit()->setCursorPosition(0);
}

bool DropDownList::typeAhead(const QString& typed) {
    const auto found = firstBeginningWith(beforeCaret() + typed);
    if (!found)
        return false;
    const bool another = found->index != currentIndex();
    setListIndex(found->index);
    const auto whole = static_cast<int>(text().size());
    lineEdit()->setSelection(whole, found->typed - whole);
    if (another)
        emit clicked();
    return true;
}

bool DropDownList::selectByText(const QString& text) {
    const auto found = firstBeginningWith(beforeCaret() + text);
    if (!found)
        return false;
    setListIndex(found->index);
    return true;
}

void DropDownList::signUnlisted(const QString& meaning) {
    sign_ = lineEdit()->addAction(Icons::named("warning"), QLineEdit::TrailingPosition);
    sign_->setToolTip(meaning);
    sign_->setVisible(false);
    connect(this, &DropDownList::changed, this, &DropDownList::updateSign);
    connect(this, &QComboBox::currentIndexChanged, this, &DropDownList::updateSign);
    updateSign();
}

void DropDownList::updateSign() {
    const bool unlisted = currentIndex() < 0 && !text().isEmpty();
    if (unlisted == sign_->isVisible())
        return;
    if (unlisted)
        described_ = accessibleDescription();
    sign_->setVisible(unlisted);
    setToolTip(unlisted ? sign_->toolTip() : QString());
    describe(*this, unlisted ? (sign_->toolTip() + ' ' + described_).trimmed() : described_);
}

QString DropDownList::beforeCaret() const {
    const QLineEdit& line = *lineEdit();
    return line.text().first(line.hasSelectedText() ? line.selectionStart()
                                                    : line.cursorPosition());
}

std::optional<DropDownList::Found> DropDownList::firstBeginningWith(const QString& wanted) const {
    const auto& entries = model_->entries();
    for (std::size_t i = 0; i < entries.size(); ++i)
        if (entries[i].text.startsWith(wanted, Qt::CaseInsensitive))
            return Found{static_cast<int>(i), static_cast<int>(wanted.size())};
    for (std::size_t i = 0; i < entries.size(); ++i)
        if (const auto alike = beginsAlike(entries[i].text, wanted))
            return Found{static_cast<int>(i), static_cast<int>(*alike)};
    return std::nullopt;
}

void DropDownList::chooseNone() {
    if (currentIndex() < 0)
        return;
    const QString typed = text();
    const int caret = lineEdit()->cursorPosition();
    const QSignalBlocker quiet(lineEdit());
    setCurrentIndex(-1);
    setEditText(typed);
    lineEdit()->setCursorPosition(caret);
}

void DropDownList::keyPressEvent(QKeyEvent* event) {
    if (typesCharacter(*event) && typeAhead(event->text()))
        event->accept();
    else
        QComboBox::keyPressEvent(event);
}

void DropDownList::inputMethodEvent(QInputMethodEvent* event) {
    // Accented letters come this way, composed of two keys.
    if (!event->commitString().isEmpty() && event->preeditString().isEmpty()) {
        QInputMethodEvent composed;
        QComboBox::inputMethodEvent(&composed);
        if (typeAhead(event->commitString())) {
            event->accept();
            return;
        }
    }
    QComboBox::inputMethodEvent(event);
}

void DropDownList::focusOutEvent(QFocusEvent* event) {
    QComboBox::focusOutEvent(event);
    if (leavesControl(*event))
        lineEdit()->setCursorPosition(0); // a long name shows its beginning
}

void DropDownList::wheelEvent(QWheelEvent* event) {
    event->ignore(); // turning the wheel over a field must not change a cheque's client
}

#include "controls/box/moc_DropDownList.cpp"
