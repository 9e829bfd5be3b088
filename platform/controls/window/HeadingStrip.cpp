#include "controls/window/HeadingStrip.h"

#include "controls/look/Icons.h"
#include "controls/look/Spoken.h"
#include "controls/look/Style.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>

HeadingStrip::HeadingStrip(QWidget* parent)
    : QFrame(parent), picture_(new QLabel(this)), heading_(new QLabel(this)),
      shown_(new QLabel(this)) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    heading_->setTextFormat(Qt::PlainText);
    heading_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    shown_->hide();
    shown_->setObjectName("lblRegistro");
    shown_->setAccessibleName("Registro");
    shown_->setTextFormat(Qt::PlainText);
    shown_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    shown_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(12, 8, 12, 8);
    row->setSpacing(10);
    row->addWidget(picture_);
    row->addWidget(heading_);
    row->addWidget(shown_, 1);
    refresh();
}

QString HeadingStrip::text() const { return heading_->text(); }

void HeadingStrip::setText(const QString& text) {
    heading_->setText(text);
    setAccessibleName(text);
}

void HeadingStrip::setRecord(const QString& record) {
    record_ = record;
    shown_->setVisible(!record.isEmpty());
    layout()->activate();
    showRecord();
}

void HeadingStrip::showRecord() {
    const QString room = shown_->fontMetrics().elidedText(record_, Qt::ElideRight, shown_->width());
    showStatus(*shown_, record_, room);
    shown_->setToolTip(room == record_ ? QString() : record_);
}

void HeadingStrip::resizeEvent(QResizeEvent* event) {
    QFrame::resizeEvent(event);
    layout()->activate();
    showRecord();
}

void HeadingStrip::setIconName(const QString& name) {
    iconName_ = name;
    refresh();
}

void HeadingStrip::changeEvent(QEvent* event) {
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange ||
        event->type() == QEvent::ApplicationPaletteChange)
        refresh();
}

void HeadingStrip::refresh() {
    const QFont wanted = headingFont();
    if (heading_->font() != wanted)
        heading_->setFont(wanted);
    const int side = QFontMetrics(wanted).height() + 4;
    picture_->setVisible(!iconName_.isEmpty());
    if (!iconName_.isEmpty())
        picture_->setPixmap(Icons::named(iconName_).pixmap(QSize(side, side), devicePixelRatioF()));
}

#include "controls/window/moc_HeadingStrip.cpp"
