#include "print/ReportRows.h"

#include <algorithm>

// A row is its values one after the other, each of them:
//   byte 0     0 null, 1 text, 2 date, 3 amount, 4 whole number: the variant's index
//   text       length in bytes as a varint, then UTF-8
//   others     Julian day, 1/10000 or the number itself as a varint, the sign in its lowest bit
// A varint has seven bits in each byte, the lowest first, and the eighth set in all but the last.

namespace {

constexpr qint64 kRowsPerChunk = 64;
constexpr int kBits = 7;
constexpr quint8 kMore = 0x80;

void put(QByteArray& bytes, quint64 number) {
    for (; number >= kMore; number >>= kBits)
        bytes.append(static_cast<char>(number | kMore));
    bytes.append(static_cast<char>(number));
}

void putSigned(QByteArray& bytes, qint64 number) {
    put(bytes, static_cast<quint64>(number) << 1 ^ static_cast<quint64>(number >> 63));
}

class Reader {
public:
    explicit Reader(const QByteArray& bytes) : at_(bytes.constData()) {}

    ReportValue value() {
        switch (*at_++) {
        case 1: {
            const auto length = static_cast<qsizetype>(number());
            at_ += length;
            return QString::fromUtf8(at_ - length, length);
        }
        case 2:
            return QDate::fromJulianDay(signedNumber());
        case 3:
            return Amount{signedNumber()};
        case 4:
            return signedNumber();
        default:
            return {};
        }
    }

private:
    quint64 number() {
        quint64 result = 0;
        for (int shift = 0;; shift += kBits) {
            const auto byte = static_cast<quint8>(*at_++);
            result |= static_cast<quint64>(byte & (kMore - 1)) << shift;
            if (byte < kMore)
                return result;
        }
    }
    qint64 signedNumber() {
        const quint64 folded = number();
        return static_cast<qint64>(folded >> 1) ^ -static_cast<qint64>(folded & 1);
    }

    const char* at_;
};

struct StoredForm {
    QByteArray& bytes;

    void operator()(std::monostate) const { bytes.append('\0'); }
    void operator()(const QString& text) const {
        const QByteArray utf8 = text.toUtf8();
        bytes.append('\1');
        put(bytes, static_cast<quint64>(utf8.size()));
        bytes.append(utf8);
    }
    void operator()(const QDate& date) const {
        if (!date.isValid())
            return (*this)(std::monostate());
        bytes.append('\2');
        putSigned(bytes, date.toJulianDay());
    }
    void operator()(Amount amount) const {
        bytes.append('\3');
        putSigned(bytes, amount.tenThousandths);
    }
    void operator()(qint64 whole) const {
        bytes.append('\4');
        putSigned(bytes, whole);
    }
};

} // namespace

void ReportRows::clear(qsizetype columns) {
    *this = ReportRows();
    columns_ = columns;
}

void ReportRows::add(const std::vector<ReportValue>& values) {
    Q_ASSERT(static_cast<qsizetype>(values.size()) == columns_);
    for (const ReportValue& value : values)
        std::visit(StoredForm{open_}, value);
    if (++size_ % kRowsPerChunk != 0)
        return;
    chunks_.emplace_back(open_.constData(), open_.size()); // no larger than it is
    bytes_ += chunks_.back().capacity() + static_cast<qint64>(sizeof(QByteArray));
    open_.resize(0);
}

void ReportRows::visit(qint64 first, qint64 end, const Work& work) const {
    Q_ASSERT(first >= 0 && end <= size_);
    std::vector<ReportValue> values(static_cast<std::size_t>(columns_));
    for (qint64 row = first - first % kRowsPerChunk; row < end; row += kRowsPerChunk) {
        const auto chunk = static_cast<std::size_t>(row / kRowsPerChunk);
        Reader reader(chunk < chunks_.size() ? chunks_[chunk] : open_);
        for (qint64 at = row; at < std::min(end, row + kRowsPerChunk); ++at) {
            for (ReportValue& value : values)
                value = reader.value();
            if (at >= first && !work(at, values))
                return;
        }
    }
}
