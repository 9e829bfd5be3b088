#include "jet/Check.h"

#include "jet/check/CheckCatalog.h"
#include "jet/page/CommitPairs.h"
#include "jet/page/Header.h"
#include "jet/row/SystemTables.h"
#include "jet/share/Recovery.h"

#include <algorithm>

namespace jet {

namespace {

constexpr std::uint32_t kFewestPages = kFirstUserDefinition;

class FileCheck {
public:
    FileCheck(const std::filesystem::path& path, Disk& disk, std::stop_token stop,
              const Progress& progress)
        : file_(path, File::Mode::read, disk), stop_(std::move(stop)), progress_(progress) {}

    Report run() {
        try {
            openAndCheck();
        } catch (const Error& error) {
            if (error.code() == Errc::io || error.code() == Errc::cancelled)
                throw;
            findings_.error(PageNo{0}, "arquivo", "a verificação não pôde continuar", error.what());
        }
        report_.findings = findings_.take();
        return std::move(report_);
    }

private:
    void openAndCheck() {
        const std::uint64_t size = file_.size();
        Bytes first(std::min<std::uint64_t>(size, formatOf(Version::jet4).pageSize));
        file_.read(0, first);
        std::optional<Header> header;
        try {
            header = parseHeader(first);
        } catch (const Error& error) {
            findings_.error(PageNo{0}, "cabeçalho", "o arquivo não pode ser aberto", error.what());
            return;
        }
        const Format& format = formatOf(header->version);
        report_.pages =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(size / format.pageSize, UINT32_MAX));
        if (size % format.pageSize != 0)
            findings_.error(static_cast<PageNo>(report_.pages), "arquivo",
                            "a última página está incompleta", std::to_string(size) + " bytes");
        if (size > format.largestFile)
            findings_.error(PageNo{0}, "arquivo", "o arquivo é maior do que o seu formato permite");
        if (report_.pages < kFewestPages) {
            findings_.error(PageNo{0}, "arquivo", "o arquivo está incompleto",
                            std::to_string(report_.pages) + " páginas");
            return;
        }
        const Bytes sound = buildHeader(header->version);
        const Stretch places = format.header.places();
        if (!std::ranges::equal(std::span(first).subspan(places.at, places.size),
                                std::span(sound).subspan(places.at, places.size)))
            findings_.error(PageNo{0}, "cabeçalho",
                            "os lugares dos mapas e das tabelas de sistema estão errados");

        checkWriting(format);

        Pager pager(std::move(file_), format, false);
        PageLedger ledger(pager, findings_);
        const CheckContext context{
            pager, {header->codePage, false},
             findings_, ledger, stop_, progress_
        };
        ledger.readFreePages();
        report_.freePages = ledger.freePages();
        checkTables(context);
    }

    /// Whether somebody's transaction was cut off, or is being written at this moment.
    void checkWriting(const Format& format) {
        const CommitPairs pairs(file_, format);
        const auto user = [](std::size_t n) { return "usuário " + std::to_string(n); };
        const Journal::Found found = Journal::find(file_.path(), file_.disk());
        const bool hasUndo = found.what == Journal::Found::What::written;
        const std::string journal = Journal::pathFor(file_.path()).string();
        if (const auto writing = pairs.find(CommitPairs::kWriting))
            findings_.error(PageNo{0}, "cabeçalho",
                            hasUndo
                                ? "uma gravação está em andamento ou foi interrompida, e o "
                                  "registro que a desfaz está ao lado do arquivo: abra o banco "
                                  "de dados com o programa para que ela seja desfeita, e "
                                  "verifique outra vez"
                                : "outro programa está gravando, ou foi interrompido no meio de "
                                  "uma gravação que ninguém pode desfazer",
                            user(*writing) + (hasUndo ? ", \"" + journal + "\"" : ""));
        else if (hasUndo)
            findings_.warning(PageNo{0}, "arquivo",
                              "ao lado do arquivo está o registro de uma gravação que não chegou a "
                              "mudar nada, ou que já terminou: ele sai quando o banco de dados for "
                              "aberto",
                              journal);
        if (found.what == Journal::Found::What::unusable)
            findings_.warning(
                PageNo{0}, "arquivo",
                "o que está ao lado do arquivo no lugar do registro das gravações não "
                "pode ser usado. " +
                    found.why,
                journal);
        if (const auto damaged = pairs.find(CommitPairs::kDamaged))
            findings_.error(PageNo{0}, "cabeçalho",
                            "outro programa encontrou uma página danificada neste arquivo",
                            user(*damaged));
    }

    /// Pages first, of all tables; then rows and indexes, which look only at pages that are theirs.
    void checkTables(const CheckContext& context) {
        std::vector<std::unique_ptr<TableCheck>> tables;
        const auto add = [&](const std::string& name, PageNo page, bool user) {
            if (auto definition = checkDefinition(context, page, "tabela \"" + name + "\""))
                tables.push_back(
                    std::make_unique<TableCheck>(context, name, std::move(*definition), user));
        };
        add("MSysObjects", kObjectsPage, false);
        if (tables.empty()) {
            findings_.error(kObjectsPage, "catálogo",
                            "sem a tabela MSysObjects nada mais se verifica");
            return;
        }
        tables.front()->checkRows();
        const CatalogCheck catalog(context, *tables.front());
        for (const CatalogTable& table : catalog.tables())
            if (table.definition != kObjectsPage)
                add(table.name, table.definition, table.user);
        context.ledger.compareWithFree();

        for (const auto& table : tables) {
            if (table != tables.front())
                table->checkRows();
            report_.indexEntries += table->checkIndexes();
            report_.rows += table->rowCount();
            if (table->definition().page() == kRelationshipsPage)
                catalog.checkRelationships(*table, tables);
            if (table->definition().page() == kRightsPage)
                catalog.checkRights(*table);
        }
        catalog.checkPartners(tables);
        report_.tables = tables.size();
    }

    File file_;
    std::stop_token stop_;
    const Progress& progress_;
    Findings findings_;
    Report report_;
};

} // namespace

Report check(const std::filesystem::path& path, Disk& disk, const std::stop_token& stop,
             const Progress& progress) {
    return FileCheck(path, disk, stop, progress).run();
}

} // namespace jet
