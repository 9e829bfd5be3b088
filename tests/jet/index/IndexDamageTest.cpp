#include "jet/IndexFile.h"
#include "jet/index/IndexPageEditor.h"
#include "jet/index/IndexTree.h"

#include <gtest/gtest.h>

#include <functional>

using namespace jet;

namespace {

/// A small tree of a few pages, then damage of one kind or another, then everything that can be
/// asked of it. What comes may be an error or a wrong answer that the damage explains; never a
/// crash or an endless loop.
class DamagedIndex : public IndexTreeOf {
protected:
    void build() {
        for (std::uint32_t n = 0; n < 100; ++n) {
            Bytes key = numberKey(n * 11 % 101);
            key.resize(n % 2 == 0 ? 100 : 5 + n % 40, std::byte{0x33});
            file.insert(key, 256 + n);
        }
        ASSERT_GE(file.members().size(), 3U);
    }

    template <class Action>
    void endure(Action&& action) {
        const Pager::Statement undone(file.pager());
        try {
            action();
        } catch (const Error& error) {
            EXPECT_EQ(error.code(), Errc::corrupt) << error.what();
        }
    }

    void tryEverything(Random& random) {
        std::size_t told = 0;
        file.tree().verify({[&](PageNo, const std::string&) { ++told; },
                            [&](std::span<const std::byte>, RowId) {}});
        EXPECT_LT(told, 10'000U);
        const std::size_t most = file.members().size() * file.format().indexCapacity();
        endure([&] {
            IndexTree::Cursor cursor(file.tree());
            std::size_t steps = 0;
            while (cursor.next())
                ASSERT_LT(++steps, most);
        });
        endure([&] {
            IndexTree::Cursor cursor(file.tree());
            std::size_t steps = 0;
            for (bool more = cursor.last(); more; more = cursor.previous())
                ASSERT_LT(++steps, most);
        });
        Bytes key = numberKey(below(random, 101));
        key.resize(5 + below(random, 60), std::byte{0x33});
        endure([&] { static_cast<void>(file.tree().hasKey(key, unpacked(300))); });
        endure([&] {
            IndexTree::Cursor cursor(file.tree());
            static_cast<void>(cursor.seekBefore(key));
        });
        endure([&] {
            for (std::uint32_t n = 0; n < 4; ++n) {
                key.resize(key.size() + std::size_t{60} * n, std::byte{0x34});
                file.tree().insert(file.pages(), key, unpacked(9000 + n));
            }
        });
        auto victim = file.model().begin();
        std::advance(victim, below(random, static_cast<std::uint32_t>(file.model().size()) - 5));
        endure([&] {
            for (int n = 0; n < 5; ++n, ++victim)
                file.tree().erase(file.pages(), victim->first, unpacked(victim->second));
        });
    }
};

TEST_P(DamagedIndex, LeavesLinkedInACircleAreAnErrorAndNoEndlessWalk) {
    for (std::uint32_t n = 0; n < 3000; ++n)
        file.insert(numberKey(n), 256 + n);
    const IndexPage root = file.page(file.tree().root());
    const PageNo first = root.child(0);
    const PageNo second = root.child(root.after(0));
    const auto edit = [&](PageNo page) {
        return IndexPageEditor(file.format(), file.pager().change(page), page, file.owner());
    };
    edit(second).setNext(first);
    IndexTree::Cursor cursor(file.tree());
    EXPECT_EQ(failure([&] {
                  while (cursor.next()) {
                  }
              }),
              Errc::corrupt);
    EXPECT_FALSE(problems().empty());

    for (const PageNo page : {first, second}) {
        IndexPageEditor leaf = edit(page);
        while (!leaf.page().empty())
            leaf.erase(0);
    }
    EXPECT_EQ(failure([&] { static_cast<void>(IndexTree::Cursor(file.tree()).first()); }),
              Errc::corrupt);
    edit(first).setPrevious(second);
    edit(second).setPrevious(first);
    EXPECT_EQ(failure([&] { static_cast<void>(cursor.seekBefore(numberKey(1))); }), Errc::corrupt);
}

TEST_P(DamagedIndex, APageThatIsNotWhereItShouldBeIsNotGivenBack) {
    build();
    const IndexPage root = file.page(file.tree().root());
    const PageNo first = root.child(0);
    const PageNo second = root.child(root.after(0));
    const auto eraseAllOf = [&](PageNo page) {
        const Pager::Statement undone(file.pager());
        while (true) {
            const IndexPage leaf = file.page(page);
            EntryBuffer buffer;
            const IndexPoint point = leaf.entry(0, buffer).point;
            file.tree().erase(file.pages(), Bytes(point.key.begin(), point.key.end()),
                              unpacked(static_cast<std::int64_t>(point.row)));
        }
    };
    file.pages().remove(file.tree().map(), first);
    EXPECT_EQ(failure([&] { eraseAllOf(first); }), Errc::corrupt);
    IndexPageEditor(file.format(), file.pager().change(first), first, file.owner())
        .setNext(file.tree().root());
    EXPECT_EQ(failure([&] { eraseAllOf(second); }), Errc::corrupt);
}

TEST_P(DamagedIndex, CheckNamesWhatIsWrong) {
    for (std::uint32_t n = 0; n < 3000; ++n)
        file.insert(numberKey(n), 256 + n);
    ASSERT_TRUE(problems().empty());
    const PageNo root = file.tree().root();
    const PageNo leaf = file.page(root).child(0);
    using Change = std::function<void(std::span<std::byte>)>;
    const auto expectAfterOn = [&](PageNo page, const Change& damage, const std::string& reason) {
        const Pager::Statement undone(file.pager());
        damage(file.pager().change(page));
        const std::vector<std::string> found = problems();
        EXPECT_TRUE(std::find(found.begin(), found.end(), reason) != found.end()) << reason;
    };
    const auto expectAfter = [&](const Change& damage, const std::string& reason) {
        expectAfterOn(leaf, damage, reason);
    };
    const Format& format = file.format();
    const std::size_t second = file.page(leaf).after(0);
    expectAfter([](auto page) { page[0] = std::byte{1}; }, "era esperada uma página de índice");
    expectAfter([](auto page) { page[4] ^= std::byte{1}; }, "a página de índice é de outra tabela");
    expectAfter([](auto page) { page[2] ^= std::byte{1}; },
                "os bytes livres da página de índice estão errados");
    expectAfter([&](auto page) { page[format.indexPage.level.at] = std::byte{1}; },
                "o nível da página de índice não combina com o seu tipo");
    expectAfter([&](auto page) { page[format.indexPage.mask.at] |= std::byte{1}; },
                "a máscara de entradas do índice é inválida");
    expectAfter([&](auto page) { page[format.indexPage.prefix.at] = std::byte{20}; },
                "o prefixo do índice é maior que a primeira entrada");
    expectAfter([&](auto page) { page[format.indexPage.next.at] ^= std::byte{1}; },
                "a ligação com a próxima página do índice está errada");
    expectAfter([&](auto page) { page[format.indexPage.previous.at] ^= std::byte{1}; },
                "a ligação com a página anterior do índice está errada");
    expectAfter([&](auto page) { page[format.indexPage.entries + second] = std::byte{0xFF}; },
                "as entradas do índice estão fora de ordem");
    const auto edit = [&](std::span<std::byte> page) {
        return IndexPageEditor(format, page, root, file.owner());
    };
    expectAfterOn(
        root, [&](auto page) { edit(page).setTail(leaf); },
        "o índice chega duas vezes à mesma página");
    expectAfterOn(
        root, [&](auto page) { edit(page).setChild(0, PageNo{50'000}); },
        "o índice aponta para fora do arquivo");
    expectAfterOn(
        root, [&](auto page) { edit(page).setLevel(2); },
        "o nível da página de índice não segue o da página acima");
    expectAfterOn(
        root, [&](auto page) { page[format.indexPage.entries] = std::byte{0}; },
        "um separador do índice é menor que as suas entradas");
    expectAfterOn(
        root, [&](auto page) { IndexPageEditor::makeEmpty(format, page, file.owner(), 1); },
        "um nó do índice não tem filhos");
    {
        const Pager::Statement undone(file.pager());
        UsageMap map = file.tree().map();
        file.pages().remove(map, leaf);
        EXPECT_EQ(problems(), std::vector<std::string>{"a página falta no mapa do índice"});
    }
    {
        const Pager::Statement undone(file.pager());
        UsageMap map = file.tree().map();
        static_cast<void>(file.pages().take(map));
        EXPECT_EQ(problems(),
                  std::vector<std::string>{"o mapa do índice contém uma página que não é dele"});
    }
    EXPECT_TRUE(problems().empty());
}

TEST_P(DamagedIndex, CheckNamesAnEntryTooShortForItsFields) {
    file.insert(numberKey(1), 256);
    file.pager().change(file.tree().root())[file.format().indexPage.mask.at] |= std::byte{4};
    EXPECT_EQ(problems(), std::vector<std::string>{"uma entrada do índice é curta demais"});
    EXPECT_EQ(failure([&] { static_cast<void>(IndexTree::Cursor(file.tree()).first()); }),
              Errc::corrupt);
}

TEST_P(DamagedIndex, AnyChangedByteIsAnErrorAtWorst) {
    build();
    Random random{99};
    for (const PageNo page : file.members()) {
        // Behind the used bytes nothing is read: the last page's garbage is tried once, coarsely.
        const std::size_t end = file.format().indexPage.entries + file.page(page).used();
        for (std::size_t at = 0; at < file.format().pageSize; at += at < end ? 1 : 97) {
            const auto damage = static_cast<std::byte>(
                below(random, 2) == 0 ? 1U << below(random, 8) : 1 + below(random, 255));
            file.pager().change(page)[at] ^= damage;
            tryEverything(random);
            if (HasFatalFailure())
                return;
            file.pager().change(page)[at] ^= damage;
        }
    }
    file.expectSound();
}

TEST_P(DamagedIndex, ManyChangedBytesAreAnErrorAtWorst) {
    build();
    Random random{98};
    const std::vector<PageNo> members = file.members();
    for (int round = 0; round < 1500; ++round) {
        std::vector<std::pair<PageNo, Bytes>> before;
        for (const PageNo page : members) {
            const PageRef ref = file.pager().read(page);
            before.emplace_back(page, Bytes(ref.bytes().begin(), ref.bytes().end()));
            const std::span<std::byte> bytes = file.pager().change(page);
            for (std::uint32_t n = below(random, 6); n > 0; --n) {
                // Links and levels to other members, masks and data to anything.
                if (below(random, 3) == 0) {
                    const std::size_t field[] = {file.format().indexPage.next.at,
                                                 file.format().indexPage.previous.at,
                                                 file.format().indexPage.tail.at};
                    const auto chosen = below(random, static_cast<std::uint32_t>(members.size()));
                    store<std::uint32_t>(bytes.data() + field[below(random, 3)],
                                         number(members[chosen]));
                } else {
                    const auto at = below(random, static_cast<std::uint32_t>(bytes.size()) - 24);
                    bytes[24 + at] = static_cast<std::byte>(random());
                }
            }
        }
        tryEverything(random);
        if (HasFatalFailure())
            return;
        for (const auto& [page, bytes] : before)
            std::copy(bytes.begin(), bytes.end(), file.pager().change(page).begin());
    }
    file.expectSound();
}

INSTANTIATE_TEST_SUITE_P(, DamagedIndex, bothVersions(), versionName);

} // namespace
