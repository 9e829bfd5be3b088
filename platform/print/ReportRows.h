#pragma once

#include "print/ReportValue.h"

#include <QByteArray>

#include <functional>

/// The rows a report has taken in, kept in little more room than their texts and digits need.
class ReportRows {
public:
    void clear(qsizetype columns);
    void add(const std::vector<ReportValue>& values);

    [[nodiscard]] qint64 size() const noexcept { return size_; }
    /// What the rows take in memory.
    [[nodiscard]] qint64 bytes() const noexcept { return bytes_ + open_.capacity(); }

    /// Runs `work` for the rows from `first` on, before `end`, in order, until it answers false.
    using Work = std::function<bool(qint64 row, const std::vector<ReportValue>& values)>;
    void visit(qint64 first, qint64 end, const Work& work) const;

private:
    std::vector<QByteArray> chunks_; ///< of kRowsPerChunk rows each
    QByteArray open_;                ///< the rows after those
    qsizetype columns_ = 0;
    qint64 size_ = 0;
    qint64 bytes_ = 0;
};
