// Files: what other programs read in them, and what is left of one that doesn't come to its end.
#include "print/OtherPrograms.h"
#include "print/ReportFixture.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <csignal>
#include <limits>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Save = SaveResult (*)(Relatorio&, const QString&, const ReportProgress&);
constexpr std::array<Save, 3> kSaves = {savePdf, saveCsv, saveXlsx};

// A row on each line, its cells as Python writes them.
const char* const kReadCsv = R"(
import csv, sys
with open(sys.argv[1], encoding='utf-8-sig', newline='') as file:
    for row in csv.reader(file, delimiter=';', strict=True):
        print(ascii(row))
)";
const char* const kReadXlsx = R"(
import openpyxl, sys
book = openpyxl.load_workbook(sys.argv[1])
sheet = book.active
print(ascii([book.properties.title, sheet.title, sheet.freeze_panes, sheet.max_row, sheet.max_column]))
for row in sheet.iter_rows():
    print(ascii([(c.value.strftime('%d/%m/%Y') if c.is_date else c.value, c.data_type, c.number_format)
                 if c.value is not None else None for c in row]))
print([round(sheet.column_dimensions[c].width) for c in 'ABCDEF'])
print([sheet.page_setup.paperSize, sheet.page_setup.fitToWidth, sheet.page_setup.fitToHeight,
       sheet.page_setup.orientation, sheet.print_title_rows, sheet.auto_filter.ref])
for row in sheet.iter_rows(min_row=5, max_row=6):
    print([c.alignment.horizontal for c in row])
)";

class Files : public ReportTest {
protected:
    static QByteArray bytesOf(const QString& file) {
        QFile opened(file);
        EXPECT_TRUE(opened.open(QIODevice::ReadOnly));
        return opened.readAll();
    }
    static void write(const QString& file, const QByteArray& bytes) {
        QFile opened(file);
        ASSERT_TRUE(opened.open(QIODevice::WriteOnly));
        opened.write(bytes);
    }
    QStringList csvOf(std::unique_ptr<RowSource> rows) {
        EXPECT_TRUE(shop_.begin(std::move(rows)));
        EXPECT_EQ(saveCsv(report_, path("r.csv"), goOn).outcome, SaveOutcome::saved);
        return readByPython(kReadCsv, path("r.csv")).split('\n', Qt::SkipEmptyParts);
    }
    QStringList xlsxOf(std::unique_ptr<RowSource> rows) {
        EXPECT_TRUE(shop_.begin(std::move(rows)));
        EXPECT_EQ(saveXlsx(report_, path("r.xlsx"), goOn).outcome, SaveOutcome::saved);
        return readByPython(kReadXlsx, path("r.xlsx")).split('\n', Qt::SkipEmptyParts);
    }
};

ShopRow named(const QString& client) { return {{}, client, {}, {}, {}, {}}; }

TEST_F(Files, CsvHasHeadingsAndRowsAsAShopsSpreadsheetReadsThem) {
    const QStringList lines = csvOf(givenRows({
        {QString("000123"), QString("Ana"), QDate(2026, 3, 1), Amount{123'456'789},
         QString("Caixa"), QDate(2026, 4, 5)},
        {qint64{-5},       {},                    {},                            Amount{-5'000},                             {},                      {}                                }
    }));
    EXPECT_THAT(
        lines,
        ElementsAre(R"(['Cheque', 'Nome', 'Dt. Emiss\xe3o', 'Valor Cheque', 'Banco', 'Bom Para'])",
                    R"(['000123', 'Ana', '01/03/2026', '12345,6789', 'Caixa', '05/04/2026'])",
                    R"(['-5', '', '', '-0,50', '', ''])"));
    const QByteArray bytes = bytesOf(path("r.csv"));
    EXPECT_TRUE(bytes.startsWith("\xEF\xBB\xBF"
                                 "Cheque;Nome;"));
    EXPECT_TRUE(bytes.endsWith("\r\n"));
}

TEST_F(Files, CsvKeepsTextsAsTheyAre) {
    const QStringList texts = {"a;b", "diz \"oi\"", "a\nb", "a\r\nb", " a ", "😀", "שלום", "a'b"};
    std::vector<ShopRow> rows;
    QStringList expected = {"#"};
    for (const QString& text : texts) {
        rows.push_back(named(text));
        expected += text;
    }
    const QStringList lines = csvOf(givenRows(rows));
    ASSERT_EQ(lines.size(), expected.size());
    EXPECT_EQ(lines[1], R"(['', 'a;b', '', '', '', ''])");
    EXPECT_EQ(lines[2], R"(['', 'diz "oi"', '', '', '', ''])");
    EXPECT_EQ(lines[3], R"(['', 'a\nb', '', '', '', ''])");
    EXPECT_EQ(lines[4], R"(['', 'a\r\nb', '', '', '', ''])");
    EXPECT_EQ(lines[5], R"(['', ' a ', '', '', '', ''])");
    EXPECT_EQ(lines[6], R"(['', '\U0001f600', '', '', '', ''])");
}

TEST_F(Files, CsvHasNoFormulas) {
    std::vector<ShopRow> rows;
    for (const char* text : {"=1+1", "+1", "-1", "@soma", "\tx", "\rx", "a=1", "=\"a\";b"})
        rows.push_back(named(text));
    const QStringList lines = csvOf(givenRows(rows));
    ASSERT_EQ(lines.size(), 9);
    EXPECT_EQ(lines[1], R"(['', "'=1+1", '', '', '', ''])");
    EXPECT_EQ(lines[2], R"(['', "'+1", '', '', '', ''])");
    EXPECT_EQ(lines[3], R"(['', "'-1", '', '', '', ''])");
    EXPECT_EQ(lines[4], R"(['', "'@soma", '', '', '', ''])");
    EXPECT_EQ(lines[5], R"(['', "'\tx", '', '', '', ''])");
    EXPECT_EQ(lines[6], R"(['', "'\rx", '', '', '', ''])");
    EXPECT_EQ(lines[7], R"(['', 'a=1', '', '', '', ''])");
    EXPECT_EQ(lines[8], R"(['', '\'="a";b', '', '', '', ''])");
}

// Above the rows what the header tells on paper, below them the total.
constexpr qsizetype kHeadings =
    5; ///< the line after the facts, title, period, date and an empty row

TEST_F(Files, XlsxHasTrueDatesAndNumbers) {
    const QStringList lines = xlsxOf(givenRows({
        {QString("000123"), QString("Ana"), QDate(2026, 3, 1),                       Amount{12'345'600},              QString("Caixa"),
         QDate(1900,                                                                                                                                     3, 1)},
        {qint64{-5},               {},                             QDate(1899,                              12,               31), Amount{-5'050}, {}, {}}
    }));
    ASSERT_EQ(lines.size(), 13);
    EXPECT_EQ(lines[0], R"(['Relat\xf3rio de Cheques', 'Relat\xf3rio de Cheques', 'A6', 8, 6])");
    EXPECT_TRUE(
        lines[kHeadings].startsWith(R"([('Cheque', 's', 'General'), ('Nome', 's', 'General'))"));
    EXPECT_EQ(lines[kHeadings + 1],
              "[('000123', 's', 'General'), ('Ana', 's', 'General'), "
              "('01/03/2026', 'd', 'dd/mm/yyyy'), (1234.56, 'n', '#,##0.00'), "
              "('Caixa', 's', 'General'), ('01/03/1900', 'd', 'dd/mm/yyyy')]");
    // Before March 1900 a sheet's days are one off: those dates are texts.
    EXPECT_EQ(lines[kHeadings + 2], "[(-5, 'n', 'General'), None, ('31/12/1899', 's', 'General'), "
                                    "(-0.505, 'n', '#,##0.00'), None, None]");
    EXPECT_EQ(lines[kHeadings + 4], "[9, 27, 12, 13, 17, 10]");
}

TEST_F(Files, XlsxTellsPeriodAndTotalOnA4) {
    const QStringList lines = xlsxOf(givenRows({
        {QString("1"), QString("Ana"), QDate(2026, 3, 1), Amount{12'345'600}, {}, {}},
        {QString("2"), QString("Bia"), QDate(2026, 3, 2), Amount{4'400},      {}, {}}
    }));
    ASSERT_EQ(lines.size(), 13);
    const char* const rest = "'s', 'General'), None, None, None, None, None]";
    EXPECT_EQ(lines[1], QString(R"([('Relat\xf3rio de Cheques', )") + rest);
    EXPECT_EQ(lines[2],
              QString(R"([('Referente ao per\xedodo: 01/01/2026 a 31/12/2026', )") + rest);
    EXPECT_EQ(lines[3], QString(R"([('Data: 20/11/2026', )") + rest);
    EXPECT_EQ(lines[4], "[None, None, None, None, None, None]");
    EXPECT_EQ(lines[kHeadings + 3],
              "[None, None, ('Total:', 's', '#,##0.00'), (1235, 'n', '#,##0.00'), None, None]");
    // On A4 upright as wide as a page, the headings on each; what sorts leaves the total alone.
    EXPECT_EQ(lines[10], "[9, None, 0, 'portrait', '$5:$5', 'A5:F7']");
    const char* const alignments = "[None, None, 'center', 'right', None, 'center']";
    EXPECT_EQ(lines[11], alignments);
    EXPECT_EQ(lines[12], "[None, None, 'center', 'right', None, None]"); // an empty cell has none
}

TEST_F(Files, XlsxLosesNoDigitOfLargeAmounts) {
    const QStringList lines = xlsxOf(givenRows({
        {{},                                 {}, {}, Amount{999'999'999'999'999},                      {}, {}},
        {{},                                 {}, {}, Amount{std::numeric_limits<std::int64_t>::max()}, {}, {}},
        {std::numeric_limits<qint64>::max(), {}, {}, {},                                               {}, {}}
    }));
    ASSERT_EQ(lines.size(), 14);
    EXPECT_TRUE(lines[kHeadings + 1].contains("(99999999999.9999, 'n', '#,##0.00')"))
        << lines[kHeadings + 1].toStdString();
    EXPECT_TRUE(lines[kHeadings + 2].contains("('922.337.203.685.477,5807', 's'"));
    EXPECT_TRUE(lines[kHeadings + 3].contains("('9223372036854775807', 's'"));
}

TEST_F(Files, XlsxHoldsHostileTexts) {
    const QStringList lines = xlsxOf(givenRows(
        {named("=1+1"), named("a\tb\nc\x01"), named("<b>&\"'"), named(QString(40'000, 'x')),
         named("😀 שלום"), named(QString(QChar(0xFFFF)) + "a" + QChar(0xD800) + QChar(0)),
         named("_x0041_")}));
    ASSERT_EQ(lines.size(), 18);
    EXPECT_TRUE(lines[kHeadings + 1].contains("('=1+1', 's'"))
        << lines[kHeadings + 1].toStdString();
    EXPECT_TRUE(lines[kHeadings + 2].contains("'a\\tb\\nc")) << lines[kHeadings + 2].toStdString();
    EXPECT_TRUE(lines[kHeadings + 3].contains("'<b>&\"\\'', 's'"))
        << lines[kHeadings + 3].toStdString();
    EXPECT_TRUE(lines[kHeadings + 4].contains(QString(32767, 'x') + "'"));
    EXPECT_TRUE(lines[kHeadings + 5].contains("\\U0001f600 \\u05e9"))
        << lines[kHeadings + 5].toStdString();
    EXPECT_TRUE(lines[kHeadings + 6].contains("'a")) << lines[kHeadings + 6].toStdString();
}

TEST_F(Files, XlsxRefusesMoreRowsThanASheetTakes) {
    // A row of nothing takes a byte for each of its values; only their count matters.
    class Nothing final : public RowSource {
    public:
        [[nodiscard]] QStringList columns() const override { return LayoutDoRelatorio::colunas(); }
        NextRow next(std::vector<ReportValue>&) override {
            return count_++ < 1'048'576 ? NextRow::row : NextRow::none;
        }

    private:
        int count_ = 0;
    };
    ASSERT_TRUE(shop_.begin(std::make_unique<Nothing>()));
    const SaveResult result = saveXlsx(report_, path("r.xlsx"), goOn);
    EXPECT_EQ(result.outcome, SaveOutcome::failed);
    EXPECT_EQ(result.reason,
              QString("Não foi possível gravar \"%1\": uma planilha comporta 1048570 "
                      "linhas e o relatório tem mais; salve-o como CSV.")
                  .arg(path("r.xlsx")));
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(Files, ThatAreCancelledLeaveTheOldOneAlone) {
    ASSERT_TRUE(shop_.begin(inventedRows(3000)));
    takeAll();
    for (const Save save : kSaves) {
        write(path("r"), "old");
        int calls = 0;
        const SaveResult result =
            save(report_, path("r"), [&](qint64, qint64) { return ++calls < 3; });
        EXPECT_EQ(result.outcome, SaveOutcome::cancelled);
        EXPECT_EQ(bytesOf(path("r")), "old");
        EXPECT_THAT(files(), ElementsAre("r"));
    }
}

TEST_F(Files, CancelledWhileRowsAreReadAreNotThere) {
    for (const Save save : kSaves) {
        ASSERT_TRUE(shop_.begin(inventedRows(3000)));
        EXPECT_EQ(save(report_, path("r"), [](qint64, qint64) { return false; }).outcome,
                  SaveOutcome::cancelled);
        EXPECT_THAT(files(), IsEmpty());
    }
}

TEST_F(Files, TakeTheOldOnesPlaceWithItsPermissions) {
    ASSERT_TRUE(shop_.begin(inventedRows(3)));
    write(path("r.csv"), QByteArray(100'000, 'x'));
    const auto permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                             QFile::ReadUser | QFile::WriteUser;
    QFile::setPermissions(path("r.csv"), permissions);
    ASSERT_EQ(saveCsv(report_, path("r.csv"), goOn).outcome, SaveOutcome::saved);
    EXPECT_LT(bytesOf(path("r.csv")).size(), 1000);
    EXPECT_EQ(QFileInfo(path("r.csv")).permissions(), permissions);
}

TEST_F(Files, ThatAreNewCanBeReadAsAnyNewFile) {
    ASSERT_TRUE(shop_.begin(inventedRows(3)));
    write(path("other"), "");
    ASSERT_EQ(savePdf(report_, path("r.pdf"), goOn).outcome, SaveOutcome::saved);
    EXPECT_EQ(QFileInfo(path("r.pdf")).permissions(), QFileInfo(path("other")).permissions());
    EXPECT_EQ(files().size(), 2U);
}

TEST_F(Files, GoWhereALinkLeads) {
    ASSERT_TRUE(shop_.begin(inventedRows(3)));
    write(path("real.csv"), "old");
    ASSERT_TRUE(QFile::link(path("real.csv"), path("link.csv")));
    ASSERT_EQ(saveCsv(report_, path("link.csv"), goOn).outcome, SaveOutcome::saved);
    EXPECT_TRUE(QFileInfo(path("link.csv")).isSymLink());
    EXPECT_TRUE(bytesOf(path("real.csv")).contains("Cheque"));
}

TEST_F(Files, SayWhyTheyCantBeWritten) {
    ASSERT_TRUE(shop_.begin(inventedRows(3)));
    std::filesystem::create_directory(folder_ / "pasta");
    struct Case {
        const char* target;
        const char* reason;
    };
    for (const auto& [target, reason] : {
             Case{"pasta",         "existe uma pasta com esse nome. Escolha outro nome"   },
             Case{"nenhuma/r.pdf",
                  "a pasta não existe ou não aceita arquivos novos. Escolha outra pasta"}
    })
        for (const Save save : kSaves) {
            const SaveResult result = save(report_, path(target), goOn);
            EXPECT_EQ(result.outcome, SaveOutcome::failed);
            EXPECT_EQ(result.reason, QString("Não foi possível gravar \"%1\": %2.")
                                         .arg(path(target), QString::fromUtf8(reason)));
        }
    EXPECT_THAT(files(), ElementsAre("pasta"));
}

/// No file grows beyond this while it lives: as on a full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limit = before_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    rlimit before_{};
    void (*handler_)(int);
};

TEST_F(Files, ThatFillTheDiskLeaveTheOldOneAlone) {
    ASSERT_TRUE(shop_.begin(inventedRows(5000)));
    takeAll();
    for (const Save save : kSaves) {
        write(path("r"), "old");
        const SaveResult result = [&] {
            const FullDisk full(20'000);
            return save(report_, path("r"), goOn);
        }();
        EXPECT_EQ(result.outcome, SaveOutcome::failed);
        EXPECT_EQ(result.reason,
                  QString("Não foi possível gravar \"%1\": o disco está cheio ou não "
                          "aceita mais dados. Libere espaço ou escolha outra pasta.")
                      .arg(path("r")));
        EXPECT_EQ(bytesOf(path("r")), "old");
        EXPECT_THAT(files(), ElementsAre("r"));
    }
}

/// While it lives the test works as one who isn't root, for whom nothing is protected.
class OrdinaryUser {
public:
    /// The folder becomes the user's.
    explicit OrdinaryUser(const std::filesystem::path& folder) : wasRoot_(::geteuid() == 0) {
        if (wasRoot_ &&
            (::chown(folder.c_str(), kUser, kUser) != 0 || ::setresuid(kUser, kUser, 0) != 0))
            throw std::runtime_error("no ordinary user can be had");
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser() {
        if (wasRoot_) {
            EXPECT_EQ(::setresuid(0, 0, 0), 0);
        }
    }

private:
    static constexpr uid_t kUser = 65'534;
    bool wasRoot_;
};

TEST_F(Files, ThatMayNotBeWrittenSayWhatToDoAndLeaveTheOldOneAlone) {
    ASSERT_TRUE(shop_.begin(inventedRows(3)));
    const auto all = std::filesystem::perms::owner_all;
    const auto reading = std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec;
    const struct {
        std::filesystem::perms file;
        std::filesystem::perms folder;
        const char* reason;
    } cases[] = {
        {reading, all,
         "o arquivo antigo está em uso ou protegido. Feche-o onde está aberto ou escolha outro "
         "nome"                                                                                    },
        {all,     reading, "a pasta não existe ou não aceita arquivos novos. Escolha outra pasta"},
    };
    const OrdinaryUser user(folder_.path());
    for (const auto& [file, folder, reason] : cases)
        for (const Save save : kSaves) {
            write(path("r"), "old");
            std::filesystem::permissions(folder_ / "r", file);
            std::filesystem::permissions(folder_.path(), folder);
            const SaveResult result = save(report_, path("r"), goOn);
            EXPECT_EQ(result.outcome, SaveOutcome::failed);
            EXPECT_EQ(result.reason, QString("Não foi possível gravar \"%1\": %2.")
                                         .arg(path("r"), QString::fromUtf8(reason)));
            EXPECT_EQ(bytesOf(path("r")), "old");
            EXPECT_THAT(files(), ElementsAre("r"));
            std::filesystem::permissions(folder_.path(), all);
            std::filesystem::remove(folder_ / "r");
        }
}

TEST_F(Files, XlsxTellsThatItsTemporaryFolderTakesNothing) {
    ASSERT_TRUE(shop_.begin(inventedRows(3)));
    const QByteArray before = qgetenv("TMPDIR");
    std::filesystem::create_directory(folder_ / "protegida");
    std::filesystem::permissions(folder_ / "protegida", std::filesystem::perms::owner_read |
                                                            std::filesystem::perms::owner_exec);
    qputenv("TMPDIR", path("protegida").toLocal8Bit());
    const SaveResult result = [&] {
        const OrdinaryUser user(folder_.path());
        write(path("r.xlsx"), "old");
        return saveXlsx(report_, path("r.xlsx"), goOn);
    }();
    before.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", before);
    EXPECT_EQ(result.outcome, SaveOutcome::failed);
    EXPECT_EQ(result.reason, QString("Não foi possível gravar \"%1\": a pasta temporária \"%2\" "
                                     "não aceita arquivos. Libere espaço nela ou salve como CSV.")
                                 .arg(path("r.xlsx"), path("protegida")));
    EXPECT_EQ(bytesOf(path("r.xlsx")), "old");
    EXPECT_THAT(files(), testing::UnorderedElementsAre("r.xlsx", "protegida"));
}

TEST_F(Files, TellOfRowsThenOfWhatIsWritten) {
    for (const Save save : kSaves) {
        ASSERT_TRUE(shop_.begin(inventedRows(3000)));
        std::vector<qint64> totals;
        qint64 most = 0;
        ASSERT_EQ(save(report_, path("r"),
                       [&](qint64 done, qint64 total) {
                           if (totals.empty() || totals.back() != total)
                               totals.push_back(total);
                           EXPECT_TRUE(total == 0 || done <= total);
                           most = std::max(most, total == 0 ? 0 : done);
                           return true;
                       })
                      .outcome,
                  SaveOutcome::saved);
        const qint64 all = save == savePdf ? report_.pageCount() : 3000;
        EXPECT_THAT(totals, ElementsAre(0, all));
        EXPECT_GT(most, all / 2);
    }
}

} // namespace
