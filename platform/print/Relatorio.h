#pragma once

#include "print/ReportLayout.h"
#include "print/ReportRows.h"
#include "print/RowSource.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

class PagePainter;
class QPainter;

/// What long work tells of itself from time to time: how much is done and of how much, 0 while that
/// is unknown. Answers whether to go on.
using ReportProgress = std::function<bool(qint64 done, qint64 total)>;

/// How a report's rows come in.
enum class RowsState : unsigned char {
    coming,
    complete, ///< all have come, or there is no report
    failed,   ///< the source has thrown: what has come is not all, and nothing more comes
};

/// The banded report: takes rows from a source, lays them out on pages when these are looked at,
/// asks for computed fields, tells of each detail and of what fails.
///
/// begin() takes the rows of the first page; the rest come in idle slices of the event loop, or at
/// once when all are needed (takeAll()). Each row's detail event is told exactly once in a report,
/// in order, as the row comes in: never again when a page is painted once more, printed or saved.
/// So a sum kept by the event's handler is complete when the footer is first painted, whatever page
/// was looked at before. Nothing is laid out ahead and no page is kept.
///
/// A source may have to give its rows anew, as they have changed since. What is on show then stays,
/// without an end, until the new rows have come as far, and gives way to them as a whole: rows of
/// two states never stand together. startedOver() tells whoever sums up the detail events.
///
/// The report knows no paper but its layout's page. Who shows, prints or saves it (ReportPreview,
/// ReportPrinting, ReportFiles) paints its pages with paintPage().
class Relatorio final : public QObject {
    Q_OBJECT
public:
    /// Answers a computed field: puts its value into `value`, or leaves that as it is (null) for a
    /// name it doesn't know. May call currentPage() and setLine().
    using ComputedField = std::function<void(const QString& name, ReportValue& value)>;

    /// A report at work. There is at most one in the program, and a report is at work while
    ///   - begin() takes the rows of the first page,
    ///   - all rows are taken in for a print, a file or a search,
    ///   - it is printed or a file is written.
    /// A report that is only on show isn't, though its rows still come in idle slices: another may
    /// begin in its place, but not within a slice, from its source or an event's handler.
    class Run {
    public:
        /// Tells `report`'s error 1007 and is false if one is at work.
        explicit Run(Relatorio& report);
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;
        ~Run();
        explicit operator bool() const noexcept { return begun_; }

    private:
        bool begun_;
    };

    explicit Relatorio(QObject* parent = nullptr);
    ~Relatorio() override;

    /// Who answers the computed fields; without one they stay empty.
    void setComputedField(const ComputedField& hook) { computed_ = hook; }
    /// For the next begin(); so is the title.
    void setLayout(const ReportLayout& layout) { nextLayout_ = layout; }
    void setTitle(const QString& title) { nextTitle_ = title; }

    /// Begins a report in place of the one before, if any: checks the layout, asks for the computed
    /// fields of kind computedFirst, takes the first page's rows and tells of them.
    /// @return false if it failed; then error() has told why.
    /// @throws what the source throws. Failed or thrown, the report before stays as it was, and who
    ///         has heard the events puts back what belongs to it.
    bool begin(std::unique_ptr<RowSource> source);

    /// Takes the rows that are still to come; `progress` is told of their count so far.
    /// @return `coming` if `progress` stopped it; the rest then come in idle slices as before.
    /// @throws what the source throws; the report has failed then.
    RowsState takeAll(const Run& run, const ReportProgress& progress);

    [[nodiscard]] QString title() const { return shown_.title; }
    [[nodiscard]] RowsState state() const noexcept { return shown_.state; }
    [[nodiscard]] bool isComplete() const noexcept { return state() == RowsState::complete; }
    /// The rows that the pages show.
    [[nodiscard]] const ReportRows& rows() const noexcept { return shown_.rows; }
    /// How many have been taken in so far; fewer than those on show while they come anew.
    [[nodiscard]] qint64 taken() const noexcept {
        return shown_.again ? shown_.again->size() : shown_.rows.size();
    }
    /// Whether the rows come anew, as they have changed.
    [[nodiscard]] bool comesAnew() const noexcept { return shown_.again.has_value(); }
    [[nodiscard]] const QStringList& columns() const noexcept { return shown_.columns; }
    /// The source's column that a detail field shows; -1 if it shows none.
    [[nodiscard]] qsizetype columnOf(qsizetype field) const { return shown_.detailColumns[field]; }
    /// What a detail field shows of a row of rows().
    [[nodiscard]] QString detailText(qsizetype field, const std::vector<ReportValue>& row) const;
    /// The layout of the report on show, with its lines where setLine() has put them.
    [[nodiscard]] const ReportLayout& layout() const noexcept { return shown_.layout; }

    /// How many pages the rows taken in so far make; 0 when there is no report.
    [[nodiscard]] int pageCount() const;
    /// The page on which a row stands, from 1.
    [[nodiscard]] int pageOf(qint64 row) const;
    /// The rows of a page: the first, and the one after the last.
    struct Rows {
        qint64 first;
        qint64 end;
    };
    [[nodiscard]] Rows rowsOf(int page) const;
    /// The page being painted, or painted last, from 1.
    [[nodiscard]] int currentPage() const noexcept { return currentPage_; }

    /// Moves the line of that name; in a computed field's answer, for the band being painted.
    void setLine(const QString& name, QPointF from, QPointF to);

    /// Paints a page, which must be one of pageCount(), with its paper's upper left corner at the
    /// painter's origin, `dotsPerInch` of the painter's units to the inch.
    void paintPage(QPainter& painter, int page, qreal dotsPerInch);

    /// Where the detail field of that index shows `length` characters from `start` on: in
    /// millimetres from the paper's upper left corner. The field's whole place if they are cut off.
    /// The row after the last is the footer, whose fields are meant then.
    [[nodiscard]] QRectF placeOf(qint64 row, qsizetype field, qsizetype start,
                                 qsizetype length) const;

    /// What a field outside the details has, and what it shows, its label with it.
    [[nodiscard]] ReportValue valueOf(const ReportField& field) const;
    [[nodiscard]] QString textOf(const ReportField& field) const;

    /// A text as it stands on a page.
    struct Text {
        QString text;
        const ReportField* field; ///< of layout()
        QPointF corner;           ///< of its band, in millimetres from the paper's
        bool repeated;            ///< stands on every page: in the header or the headings

        [[nodiscard]] QRectF place() const { return field->place.translated(corner); }
    };
    /// All texts of a page, the empty ones too, in the order of reading.
    [[nodiscard]] std::vector<Text> textsOf(int page);
    /// Where it shows `length` characters from `start` on, as above.
    [[nodiscard]] QRectF placeOf(const Text& text, qsizetype start, qsizetype length) const;
    /// The character of it that stands there, in millimetres from the paper's corner; its length
    /// for what is behind the last one's middle.
    [[nodiscard]] qsizetype characterAt(const Text& text, QPointF point) const;

    /// Tells the error event; for who prints the report.
    void fail(ReportError code);

signals:
    /// A report has begun; the pages of the one before are gone.
    void began();
    /// A detail row has been taken in.
    void detail(const ReportRow& row);
    /// The rows come anew from the first one on: what detail() has told so far has come to nothing.
    void startedOver();
    /// Some rows have been taken in, or all, or the source has failed.
    void rowsTaken();
    /// Other rows stand on the pages: those that came anew.
    void rowsReplaced();
    /// The error event: see errorCode().
    void error(qint32 code);

private:
    /// A report's looks and rows.
    struct Content {
        Content();
        Content(Content&&) noexcept;
        Content& operator=(Content&&) noexcept;
        ~Content();

        ReportLayout layout;
        QString title;
        QHash<QString, ReportValue> firstAnswers; ///< of the fields of kind computedFirst
        std::unique_ptr<PagePainter> painter;
        int rowsPerPage = 1;

        std::unique_ptr<RowSource> source; ///< while rows are coming
        RowsState state = RowsState::complete;
        QStringList columns;
        QList<qsizetype> detailColumns;
        ReportRows rows;
        std::optional<ReportRows> again; ///< the rows that come anew, as long as they are fewer
    };

    [[nodiscard]] Content contentOver(std::unique_ptr<RowSource> source) const;
    void takeRow(Content& report);
    void takeNext(Content& report);
    void takeSlice();
    void endSlices();
    [[nodiscard]] qint64 beginOfLastPage() const;
    [[nodiscard]] QPointF cornerOfRow(qint64 row) const;
    void paintBand(QPainter& painter, const ReportBand& band, qreal& y) const;
    void paintDetails(QPainter& painter, int page, qreal& y) const;

    ReportLayout nextLayout_;
    QString nextTitle_;
    ComputedField computed_;

    Content shown_;
    std::vector<ReportValue> row_; ///< the one being taken in
    QTimer slices_;
    int currentPage_ = 1;
};
