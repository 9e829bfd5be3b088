#include "jet/copy/SourceFile.h"

#include "jet/page/CommitPairs.h"
#include "jet/page/DataPage.h"
#include "jet/page/UsageMap.h"
#include "jet/row/SystemTables.h"

#include <algorithm>

namespace jet {

namespace {

constexpr PageKind kUnreadableKind{0xFF};
/// The version of a file whose header is gone: in Jet 3 the first definition stands at 4 kB and
/// says so.
Version guessedVersion(const File& file) {
    const std::uint64_t pageSize = formatOf(Version::jet3).pageSize;
    std::byte head[DefinitionPageLayout::size]{};
    if (file.size() >= (number(kObjectsPage) + 1) * pageSize)
        file.read(number(kObjectsPage) * pageSize, head);
    return isPage(head, PageKind::definition) &&
                   load(head, DefinitionPageLayout::freeBytes) == kDefinitionPageMark
               ? Version::jet3
               : Version::jet4;
}

/// Puts a part of one page in the place of the same part of another.
void copyPart(Stretch part, const Bytes& from, Bytes& to) {
    std::memcpy(to.data() + part.at, from.data() + part.at, part.size);
}

} // namespace

SourceFile::SourceFile(const std::filesystem::path& path, Losses& losses, Disk& disk)
    : losses_(losses) {
    File file(path, File::Mode::read, disk);
    readHeader(file);
    const Format& format = formatOf(header_.version);
    texts_ = {header_.codePage, false};
    const std::uint64_t size = file.size();
    if (size > format.largestFile)
        throw Error(Errc::unsupported, "O arquivo é maior do que o seu formato permite.");
    if (size % format.pageSize != 0)
        losses_.tell({Loss::What::page,
                      "",
                      static_cast<PageNo>(size / format.pageSize),
                      {},
                      "a última página está incompleta"});
    if (size / format.pageSize <= kFirstUserDefinition)
        losses_.tell({Loss::What::page,
                      "",
                      static_cast<PageNo>(size / format.pageSize),
                      {},
                      "o arquivo está incompleto"});
    pager_ = std::make_unique<Pager>(std::move(file), format, false);
    if (damaged()) {
        survey();
        if (rebuiltHeader_ && std::ranges::count(kinds_, PageKind::definition) == 0)
            throw Error(Errc::unsupported, "O arquivo não é um banco de dados .mdb.");
        readFreeMap();
        listOwned();
    }
}

void SourceFile::readHeader(const File& file) {
    Bytes first(std::min<std::uint64_t>(file.size(), formatOf(Version::jet4).pageSize));
    try {
        file.read(0, first);
        header_ = parseHeader(first);
        first.resize(formatOf(header_.version).pageSize);
        newHeader_ = std::move(first);
    } catch (const Error& error) {
        // A newer format, or one that is encoded, isn't damage.
        if (!damaged() || namesItsFormat(first))
            throw;
        if (file.size() < formatOf(Version::jet3).pageSize)
            throw Error(Errc::unsupported, "O arquivo não é um banco de dados .mdb.");
        losses_.tell({Loss::What::note,
                      "",
                      PageNo{0},
                      {},
                      "o cabeçalho do arquivo estava danificado e foi refeito"});
        rebuiltHeader_ = true;
        newHeader_ = buildHeader(guessedVersion(file));
        header_ = parseHeader(newHeader_);
    }
    if (damaged() && !header_.password.empty())
        losses_.tell({Loss::What::note,
                      "",
                      PageNo{0},
                      {},
                      "o arquivo novo pede a mesma senha que o cabeçalho do danificado tem"});
    const Format& format = formatOf(header_.version);
    const Bytes sound = buildHeader(header_.version);
    copyPart(format.header.places(), sound, newHeader_);
    if (damaged() && !isKnownCodePage()) {
        copyPart(format.header.codePage, sound, newHeader_);
        header_.codePage = parseHeader(newHeader_).codePage;
        losses_.tell({Loss::What::note,
                      "",
                      PageNo{0},
                      {},
                      "a página de código do arquivo não existe; ficou a 1252"});
    }
    const CommitPairs pairs(std::span<const std::byte>(newHeader_)
                                .subspan(format.header.commitPairs.at)
                                .first<CommitPairs::kBytes>());
    if (damaged() && pairs.find(CommitPairs::kWriting))
        losses_.tell({Loss::What::note,
                      "",
                      PageNo{0},
                      {},
                      "um programa foi interrompido enquanto gravava: o que ele mudava pode estar "
                      "pela metade"});
    for (std::size_t i = 0; i < CommitPairs::kUsers; ++i)
        store(newHeader_.data() + format.header.commitPairs.at, CommitPairs::pair(i),
              CommitPairs::kFirst);
}

bool SourceFile::isKnownCodePage() const {
    try {
        (void)TextCodec(header_.version, header_.codePage);
        return true;
    } catch (const Error&) {
        return false;
    }
}

std::optional<PageRef> SourceFile::page(PageNo page) {
    if (!damaged())
        return pager_->read(page);
    if (number(page) >= pager_->pageCount())
        return std::nullopt;
    try {
        return pager_->read(page);
    } catch (const Error&) {
        return std::nullopt;
    }
}

void SourceFile::survey() {
    kinds_.assign(pager_->pageCount(), kUnreadableKind);
    owners_.assign(pager_->pageCount(), 0);
    free_.assign(pager_->pageCount(), false);
    for (std::uint32_t i = 0; i < pager_->pageCount(); ++i)
        if (const auto ref = page(static_cast<PageNo>(i))) {
            kinds_[i] = ref->kind();
            owners_[i] = ref->view().load(format().dataPage.owner);
        } else {
            losses_.tell({Loss::What::note,
                          "",
                          static_cast<PageNo>(i),
                          {},
                          "o disco não devolve esta página"});
        }
}

void SourceFile::readFreeMap() {
    try {
        const UsageMap map(*pager_, kFreePagesMap, UsageMap::Kind::global);
        for (auto at = map.next(0); at; at = map.next(number(*at) + 1))
            free_[number(*at)] = true;
        // A map that gives the very first pages away is no map.
        if (std::any_of(free_.begin(),
                        free_.begin() +
                            std::min<std::ptrdiff_t>(kFirstUserDefinition,
                                                     static_cast<std::ptrdiff_t>(free_.size())),
                        [](bool free) { return free; }))
            corrupt(kFreePagesMap.page, "o mapa de páginas livres contém uma página em uso");
    } catch (const Error&) {
        std::fill(free_.begin(), free_.end(), false);
        losses_.tell(
            {Loss::What::note,
             "",
             kFreePagesMap.page,
             {},
             "o mapa de páginas livres está danificado: registros excluídos podem voltar"});
    }
}

PageKind SourceFile::kind(PageNo page) const noexcept {
    return number(page) < kinds_.size() ? kinds_[number(page)] : kUnreadableKind;
}

std::uint32_t SourceFile::owner(PageNo page) const noexcept {
    return kind(page) == PageKind::data ? owners_[number(page)] : 0;
}

bool SourceFile::isFree(PageNo page) const noexcept {
    return number(page) < free_.size() && free_[number(page)];
}

void SourceFile::listOwned() {
    for (std::uint32_t i = 0; i < owners_.size(); ++i)
        if (kinds_[i] == PageKind::data && !free_[i])
            owned_[owners_[i]].push_back(static_cast<PageNo>(i));
}

const std::vector<PageNo>& SourceFile::pagesOf(std::uint32_t owner) const noexcept {
    static const std::vector<PageNo> none;
    const auto found = owned_.find(owner);
    return found == owned_.end() ? none : found->second;
}

} // namespace jet
