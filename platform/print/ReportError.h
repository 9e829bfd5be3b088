#pragma once

#include <QtGlobal>

/// What can keep a report from being printed, by the numbers of its error event.
enum class ReportError : unsigned char {
    noPrinter,      ///< 1001: print() and no printer is installed
    nothingToPrint, ///< 1002: the source has no row
    unknownColumn,  ///< 1003: a field shows a column that the source doesn't have, or shows one
                    ///<       outside the detail band
    misplaced,      ///< 1004: a field, line or frame reaches out of its band, a band has a negative
                    ///<       height, or two fields overlap
    unknownFormat,  ///< 1005: a field has a format of no known name
    pageTooSmall,   ///< 1006: the page has no room for header, headings and one detail or footer,
                    ///<       or the paper in the printer none for what stands between the margins
    alreadyRunning, ///< 1007: a report is at work; see Relatorio::Run
};

/// The number that the error event carries: 0x80040000 + 1001 to 1007 as a signed 32-bit number.
[[nodiscard]] constexpr qint32 errorCode(ReportError error) noexcept {
    return static_cast<qint32>(0x80040000U + 1001U + static_cast<quint32>(error));
}
