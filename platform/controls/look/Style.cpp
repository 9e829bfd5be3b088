#include "controls/look/Style.h"

#include "controls/look/Icons.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTranslator>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

constexpr qreal kSmallestText = 10.0; // points
constexpr qreal kHeadingStep = 2.0;
constexpr int kRowAir = 4; // pixels between the rows of lists
// Thick enough for the eye to find at once which control has the focus, on any ground.
constexpr int kFocusRing = 2;

/// Fusion with the few habits of this program.
class HouseStyle final : public QProxyStyle {
public:
    HouseStyle() : QProxyStyle(QStyleFactory::create("Fusion")) {}

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* answer) const override {
        switch (hint) {
        case SH_UnderlineShortcut:
            return 1; // the day is worked without a mouse: access keys always show
        case SH_ItemView_ActivateItemOnSingleClick:
        case SH_EtchDisabledText:
        case SH_DitherDisabledText:
            return 0;
        default:
            return QProxyStyle::styleHint(hint, option, widget, answer);
        }
    }

    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override {
        const QSize size = QProxyStyle::sizeFromContents(type, option, contents, widget);
        return type == CT_ItemViewItem ? size + QSize(0, kRowAir) : size;
    }

    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override {
        // The frame of a list or a memo stands outside of what is drawn in it: room for the ring.
        if (metric == PM_DefaultFrameWidth && qobject_cast<const QAbstractScrollArea*>(widget))
            return kFocusRing;
        return QProxyStyle::pixelMetric(metric, option, widget);
    }

    // Fusion draws outlines as a darker shade of the window: next to none in dark colours, and too
    // faint to tell a box from its ground in light ones.
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        switch (element) {
        case PE_FrameLineEdit:
        case PE_IndicatorCheckBox:
        case PE_IndicatorItemViewItemCheck:
        case PE_Frame:
            QProxyStyle::drawPrimitive(element, option, painter, widget);
            drawOutline(*option, *painter);
            return;
        case PE_FrameFocusRect:
            if (const auto* focus = qstyleoption_cast<const QStyleOptionFocusRect*>(option)) {
                const QPalette& colours = focus->palette;
                const bool marked = focus->backgroundColor == colours.color(QPalette::Highlight);
                drawRing(*painter, focus->rect,
                         colours.color(marked ? QPalette::HighlightedText : QPalette::Link));
                return;
            }
            break;
        default:
            break;
        }
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(option);
        if (control == CC_ComboBox && combo && combo->frame)
            drawOutline(*option, *painter);
    }

    // Fusion draws the entry under the hand in the highlight colour but its icon as if it weren't.
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
        const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
        constexpr State kUnderHand = State_Selected | State_Enabled;
        if (element == CE_MenuItem && item && (item->state & kUnderHand) == kUnderHand) {
            QStyleOptionMenuItem highlighted = *item;
            const int side = pixelMetric(PM_SmallIconSize, option, widget);
            highlighted.icon = QIcon(item->icon.pixmap(
                {side, side}, painter->device()->devicePixelRatioF(), QIcon::Selected));
            return QProxyStyle::drawControl(element, &highlighted, painter, widget);
        }
        if (element == CE_HeaderEmptyArea) { // headings go on to the edge, as rows do
            QStyleOptionHeader rest;
            rest.QStyleOption::operator=(*option);
            rest.position = QStyleOptionHeader::End;
            return QProxyStyle::drawControl(CE_HeaderSection, &rest, painter, widget);
        }
        QProxyStyle::drawControl(element, option, painter, widget);
        // On these it draws next to nothing for the focus.
        constexpr State kFocused = State_HasFocus | State_Enabled;
        if ((element == CE_PushButton || element == CE_TabBarTab) &&
            (option->state & kFocused) == kFocused)
            drawRing(*painter, option->rect.adjusted(1, 1, -1, -1),
                     option->palette.color(QPalette::Link));
    }

    QIcon standardIcon(StandardPixmap picture, const QStyleOption* option,
                       const QWidget* widget) const override {
        switch (picture) {
        case SP_MessageBoxInformation:
            return Icons::named("information");
        case SP_MessageBoxWarning:
            return Icons::named("warning");
        case SP_MessageBoxQuestion:
            return Icons::named("question");
        case SP_MessageBoxCritical:
            return Icons::named("critical");
        default:
            return QProxyStyle::standardIcon(picture, option, widget);
        }
    }

private:
    static void drawOutline(const QStyleOption& option, QPainter& painter) {
        const bool enabled = option.state & State_Enabled;
        if (enabled && (option.state & State_HasFocus))
            return drawRing(painter, option.rect, option.palette.color(QPalette::Link));
        drawFrame(painter, option.rect,
                  option.palette.color(enabled ? QPalette::Dark : QPalette::Mid), 1);
    }

    static void drawRing(QPainter& painter, const QRect& around, const QColor& colour) {
        drawFrame(painter, around, colour, kFocusRing);
    }

    static void drawFrame(QPainter& painter, const QRect& around, const QColor& colour, int width) {
        const qreal half = width / 2.0; // the pen draws to both sides of its line
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colour, width));
        painter.drawRoundedRect(QRectF(around).adjusted(half, half, -half, -half), 2, 2);
        painter.restore();
    }
};

struct Shade {
    QPalette::ColorRole role;
    QRgb light;
    QRgb dark;
};

// Text on its ground has a contrast of at least 4.5:1 in both schemes.
constexpr Shade kShades[] = {
    {QPalette::Window,          0xfff3f5f5, 0xff22272a},
    {QPalette::WindowText,      0xff1b2225, 0xffe6eaeb},
    {QPalette::Base,            0xffffffff, 0xff191d1f},
    {QPalette::AlternateBase,   0xffe9efef, 0xff2a3034},
    {QPalette::Text,            0xff1b2225, 0xffe6eaeb},
    {QPalette::PlaceholderText, 0xff667074, 0xff949da1},
    {QPalette::Button,          0xffe8ecec, 0xff343b3f},
    {QPalette::ButtonText,      0xff1b2225, 0xffe6eaeb},
    {QPalette::BrightText,      0xffffffff, 0xffffffff},
    {QPalette::Light,           0xffffffff, 0xff485156},
    {QPalette::Midlight,        0xfff0f3f3, 0xff3c4448},
    {QPalette::Mid,             0xffb9c2c4, 0xff4a5358},
    {QPalette::Dark,            0xff849093, 0xff7a868b},
    {QPalette::Shadow,          0xff5c6669, 0xff000000},
    {QPalette::Highlight,       0xff1d6a7b, 0xff23798c},
    {QPalette::HighlightedText, 0xffffffff, 0xffffffff},
    {QPalette::Link,            0xff1d6a7b, 0xff6fc3d4},
    {QPalette::LinkVisited,     0xff5a4b86, 0xffb3a5dc},
    {QPalette::ToolTipBase,     0xfffffbe8, 0xff3c4448},
    {QPalette::ToolTipText,     0xff1b2225, 0xffe6eaeb},
};

constexpr Shade kDisabledShades[] = {
    {QPalette::WindowText,      0xff7d878a, 0xff7d878b},
    {QPalette::Text,            0xff7d878a, 0xff7d878b},
    {QPalette::ButtonText,      0xff7d878a, 0xff7d878b},
    {QPalette::Base,            0xffedf0f0, 0xff22272a},
    {QPalette::Highlight,       0xffb9c2c4, 0xff4a5358},
    {QPalette::HighlightedText, 0xff4a5358, 0xffb9c2c4},
};

/// Qt's own texts in Portuguese, with the kinds of files that its translation leaves in English.
class QtTexts final : public QTranslator {
public:
    using QTranslator::QTranslator;

    [[nodiscard]] bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char* comment,
                      int count) const override {
        struct FileKind {
            const char* english;
            const char* portuguese;
        };
        static constexpr FileKind kFileKinds[] = {
            {"Drive",    "Unidade"     },
            {"Folder",   "Pasta"       },
            {"%1 File",  "Arquivo %1"  },
            {"Shortcut", "Atalho"      },
            {"Unknown",  "Desconhecido"},
        };
        QString known = QTranslator::translate(context, text, comment, count);
        if (!known.isNull() || std::strcmp(context, "QAbstractFileIconProvider") != 0)
            return known;
        const auto* const kind = std::ranges::find_if(
            kFileKinds, [&](const FileKind& one) { return std::strcmp(one.english, text) == 0; });
        return kind != std::end(kFileKinds) ? QString(kind->portuguese) : known;
    }
};

} // namespace

QFont headingFont() {
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() + kHeadingStep);
    return font;
}

void applyColours(ColourScheme scheme) {
    QPalette palette;
    const auto pick = [scheme](const Shade& shade) {
        return QColor::fromRgb(scheme == ColourScheme::light ? shade.light : shade.dark);
    };
    for (const Shade& shade : kShades)
        palette.setColor(shade.role, pick(shade));
    for (const Shade& shade : kDisabledShades)
        palette.setColor(QPalette::Disabled, shade.role, pick(shade));
    QApplication::setPalette(palette);
}

void aplicarEstilo(QApplication& application) {
    const auto* system = new SystemColours(&application);
    QApplication::setStyle(new HouseStyle);
    applyColours(system->scheme());
    QObject::connect(system, &SystemColours::changed, &application,
                     [system] { applyColours(system->scheme()); });

    QFont font = QApplication::font();
    font.setPointSizeF(std::max(font.pointSizeF(), kSmallestText));
    QApplication::setFont(font);

    QLocale::setDefault(QLocale(QLocale::Portuguese, QLocale::Brazil));
    auto* texts = new QtTexts(&application);
    (void)texts->load("qtbase_pt_BR", QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    QApplication::installTranslator(texts);
}
