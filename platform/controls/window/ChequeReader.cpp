#include "controls/window/ChequeReader.h"

#include "controls/typing/Typing.h"
#include "controls/window/Failure.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

// "9" stands for a digit.
constexpr QLatin1String kShape("<99999999<9999999999>999999999999");
constexpr QChar kUnread('?');

// Readers leave some hundredths of a second between two keys.
constexpr auto kPause = 200ms;

bool fits(QChar typed, QLatin1Char wanted) {
    if (wanted != QLatin1Char('9'))
        return typed == wanted;
    return (typed >= '0' && typed <= '9') || typed == kUnread;
}

/// On some keyboards the marks need such a key.
bool turnsOtherKeys(const QKeyEvent& key) {
    return (key.key() >= Qt::Key_Shift && key.key() <= Qt::Key_ScrollLock) ||
           key.key() == Qt::Key_AltGr;
}

} // namespace

ChequeReader::ChequeReader(QWidget& window) : window_(window) {
    pause_.setSingleShot(true);
    pause_.setInterval(kPause);
    connect(&pause_, &QTimer::timeout, this, [this] { pause(); });
    qApp->installEventFilter(this);
}

ChequeReader::~ChequeReader() = default;

bool ChequeReader::takes(const QKeyEvent& key) const {
    if (key.isAutoRepeat() || (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier)))
        return false;
    const QString typed = key.text();
    if (line_.size() == kShape.size()) // the mark at its end, which keyboards make various signs of
        return isEnter(key) || (typed.size() == 1 && !typed[0].isDigit());
    return typed.size() == 1 && fits(typed[0], kShape[line_.size()]);
}

void ChequeReader::hold(const QKeyEvent& key, QWidget& control) {
    if (held_.empty())
        control_ = &control;
    if (line_.size() < kShape.size())
        line_ += key.text();
    held_.emplace_back(key.clone());
    pause_.start();
}

bool ChequeReader::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || givingBack_ || !watched->isWidgetType())
        return false;
    auto& control = *static_cast<QWidget*>(watched);
    if (control.window() != &window_)
        return false;
    const auto& key = *static_cast<const QKeyEvent*>(event);
    if (turnsOtherKeys(key))
        return false;
    if (!takes(key))
        giveBack();
    if (!takes(key)) // nor as the first of a line
        return false;
    hold(key, control);
    event->accept(); // or else the control's parent would be asked
    return true;
}

void ChequeReader::pause() {
    if (HandlersPaused::anyLives())
        return pause_.start(); // nobody would hear of it
    if (line_.size() < kShape.size())
        return giveBack();
    held_.clear();
    QString digits = std::exchange(line_, QString());
    digits.remove('<').remove('>');
    emit lineRead(digits);
}

void ChequeReader::giveBack() {
    pause_.stop();
    line_.clear();
    givingBack_ = true;
    for (const auto& key : std::exchange(held_, {}))
        if (control_)
            QCoreApplication::sendEvent(control_, key.get());
    givingBack_ = false;
}

#include "controls/window/moc_ChequeReader.cpp"
