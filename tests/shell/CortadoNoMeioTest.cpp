// What is cut off half-way, by the disk or by the end of the program, while another station has the
// file open: each cheque is as before or gone, the other station reads a sound file, and what this
// one says is true.
#include "cheques/FrmConsultaCH.h"
#include "collections/FrmLancasSFundos.h"
#include "collections/FrmLocCHTerceiros.h"
#include "controls/box/ListView.h"
#include "jet/Check.h"
#include "shell/FailingShop.h"

#include <QRegularExpression>
#include <QTimer>

#include <cerrno>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Paints nothing: the threads that Qt may have for it don't go along into a forked program, which
/// would wait for them for ever.
class Unpainted final : public QObject {
protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        return event->type() == QEvent::Paint;
    }
};

class CutOff : public FailingShop {
protected:
    void SetUp() override {
        FailingShop::SetUp();
        setMessageFunction([](const Message&) { return MessageAnswer::ok; });
    }

    static void settleAll() {
        Mirtal::modo = "Baixar";
        auto& form = open<FrmLocCHTerceiros>();
        click(form, "chkdescontar");
        for (int row = 0; row < control<ListView>(form, "lstterceiros").count(); ++row)
            clickCheckBox(form, "lstterceiros", row);
        press(Qt::Key_S, Qt::AltModifier);
        form.unload();
    }
    static void purgeAll() {
        auto& form = open<FrmApagar>();
        purge(form);
        form.unload();
    }
    /// As it is written while it goes on, when it takes longer.
    static void eachForItself() {
        Mirtal::aoMostrarMensagem([](const QString& text) {
            if (!text.isEmpty())
                data().Automacao.flush();
        });
    }

    void cutOff(FailingDisk::Refuses what, int spared) {
        disk_.what = what;
        disk_.error = EIO;
        disk_.spared = spared;
        disk_.refused = "automacao.mdb";
    }

    /// Another station, with a list of the cheques open all the time.
    class Station {
    public:
        explicit Station(const FailingShop&) {
            base_.Open(data().Automacao.ConnectionString());
            rs_.Open("select * from cheques order by lancamento", base_);
        }
        /// The entry numbers of the cheques, each of which is whole.
        Strings cheques() {
            rs_.Requery();
            Strings found;
            for (; !rs_.EOF(); rs_.MoveNext()) {
                EXPECT_EQ(rs_["numero"].text(), "000001");
                EXPECT_EQ(rs_["valor"].text(), "10,00");
                EXPECT_EQ(rs_["bompara"].text(), "0" + rs_["lancamento"].text() + "/01/2024");
                found.push_back(rs_["lancamento"].text());
            }
            return found;
        }
        /// How many cheques are gone by the history.
        std::size_t recorded() {
            if (!base_.database().hasTable(Historico::kTabela))
                return 0;
            ado::Recordset history;
            history.Open(Historico::kTabela, base_);
            return static_cast<std::size_t>(history.RecordCount());
        }
        /// Begins to save and doesn't end: others wait for ten seconds, then give up.
        void hold() {
            base_.BeginTrans();
            rs_.Requery();
            rs_["valor"] = jet::Currency{};
            rs_.Update();
        }
        void letGo() { base_.RollbackTrans(); }

    private:
        ado::Connection base_;
        ado::Recordset rs_;
    };

    /// The work, from the five cheques, fails as another station never ends its saving; once that
    /// is over the next one goes through to the end.
    template <class Work>
    void expectHeldUp(Station& other, std::size_t goneBefore, Work&& work) {
        work();
        ASSERT_EQ(failed_.size(), 1U);
        EXPECT_THAT(failed_[0], testing::HasSubstr("Outra estação está gravando"));
        EXPECT_EQ(gone(failed_[0]), goneBefore);
        other.letGo();
        EXPECT_EQ(other.cheques().size(), 5 - goneBefore);
        expectSound();
        Mirtal::aoMostrarMensagem({});
        work();
        EXPECT_EQ(failed_.size(), 1U);
        EXPECT_LT(other.cheques().size(), 5 - goneBefore);
        expectSound();
    }

    void expectSound() const { EXPECT_TRUE(jet::check(shop().file()).sound()); }

    /// The program's end, and its next start.
    void restart() {
        WindowList::instance().clear();
        dbconectar::descartar();
        data().Automacao.setDisk(disk_);
        data().abrir();
    }

    /// How many cheques are gone, by what is said.
    static std::size_t gone(const std::string& said) {
        static const QRegularExpression kMany("(\\d+) cheques? já (foi|foram)");
        const auto match = kMany.match(QString::fromStdString(said));
        EXPECT_NE(match.hasMatch(), said.find("Nenhum cheque foi ") != std::string::npos) << said;
        return match.captured(1).toULongLong();
    }

    /// The work, from the five cheques, cut off at every write in turn; nothing is left at the end.
    /// @return how often some of them were gone and others not.
    template <class Work>
    std::size_t failAtEachWrite(Work&& work) {
        Station other(*this);
        const Strings all = other.cheques();
        std::size_t partly = 0;
        std::size_t goneInAll = 0;
        for (int write = 0;; ++write) {
            SCOPED_TRACE("write " + std::to_string(write));
            failed_.clear();
            cutOff(FailingDisk::Refuses::writing, write);
            work();
            disk_.refused.clear();
            const Strings left = other.cheques();
            goneInAll += all.size() - left.size();
            EXPECT_EQ(other.recorded(), goneInAll);
            expectSound();
            restart();
            if (failed_.empty()) {
                EXPECT_GT(write, 3);
                return partly;
            }
            EXPECT_EQ(failed_.size(), 1U);
            EXPECT_EQ(gone(failed_[0]), all.size() - left.size());
            partly += left.size() < all.size() ? 1 : 0;
            refill(left);
            EXPECT_EQ(other.cheques().size(), all.size());
        }
    }
    /// Those of the five that aren't left any more.
    void refill(const Strings& left) {
        for (int i = 1; i <= 5; ++i)
            if (std::ranges::find(left, std::to_string(i)) == left.end()) {
                Row row = cheque(i);
                row.push_back({"lancamento", number(i)});
                given("cheques", {row});
            }
        data().Automacao.flush();
    }

    /// The work in a program of its own that is killed where it would write for the n-th time.
    /// @return whether it was: there are no more writes otherwise.
    template <class Work>
    bool killAt(int write, Work&& work) {
        WindowList::instance().clear();
        dbconectar::descartar();
        const pid_t program = ::fork();
        if (program == 0) {
            Unpainted eyes;
            qApp->installEventFilter(&eyes);
            data().Automacao.setDisk(disk_);
            data().abrir();
            cutOff(FailingDisk::Refuses::life, write);
            work();
            ::_exit(0);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(program, &status, 0), program);
        data().abrir();
        return WIFSIGNALED(status);
    }
    template <class Work>
    void killAtEachWrite(Work&& work) {
        Station other(*this);
        std::size_t goneInAll = 0;
        for (int write = 0;; ++write) {
            SCOPED_TRACE("write " + std::to_string(write));
            const bool killed = killAt(write, work);
            const Strings left = other.cheques();
            EXPECT_THAT(left, testing::IsSubsetOf({"1", "2", "3", "4", "5"}));
            goneInAll += 5 - left.size();
            EXPECT_EQ(other.recorded(), goneInAll);
            expectSound();
            if (!killed) {
                EXPECT_GT(write, 3);
                return;
            }
            refill(left);
        }
    }
};

INSTANTIATE_TEST_SUITE_P(, CutOff, inFiles(), keptName);

TEST_P(CutOff, APurgeThatTheDiskEndsSaysHowManyAreGone) {
    const std::size_t partly = failAtEachWrite([] {
        eachForItself();
        purgeAll();
    });
    EXPECT_GT(partly, 3U);
}

TEST_P(CutOff, ASettlementThatTheDiskEndsHasSettledNone) {
    EXPECT_EQ(failAtEachWrite(&settleAll), 0U); // all of them are written at once
}

TEST_P(CutOff, APurgeWhoseProgramDiesLeavesEachChequeAsBeforeOrGone) {
    killAtEachWrite([] {
        eachForItself();
        purgeAll();
    });
}

TEST_P(CutOff, ASettlementWhoseProgramDiesLeavesEachChequeAsBeforeOrGone) {
    killAtEachWrite(&settleAll);
}

TEST_P(CutOff, APurgeThatAnotherStationHoldsUpSaysHowManyAreGone) {
    Station other(*this);
    Mirtal::aoMostrarMensagem([&](const QString& text) {
        if (!text.isEmpty())
            data().Automacao.flush();
        if (text.endsWith(":3"))
            other.hold();
    });
    expectHeldUp(other, 2, &purgeAll);
}

TEST_P(CutOff, ASettlementThatAnotherStationHoldsUpHasSettledNone) {
    Station other(*this);
    other.cheques();
    other.hold();
    expectHeldUp(other, 0, &settleAll);
}

// ---- a window that can't be loaded

TEST_P(CutOff, AConsultedChequeThatCantBeReadIsToldOnceAndLeavesNoWindowBehind) {
    const auto bounced = [](const char* numero) {
        return Row{
            {"cliente", number(kAna)  },
            {"banco",   number(kNorte)},
            {"numero",  words(numero) },
            {"valor",   money(10)     },
            {"empresa", words("Loja") }
        };
    };
    given("semfundos", {bounced("901"), bounced("902")});
    data().Automacao.flush();
    auto& form = open<FrmConsultaCH>();
    type("ana");
    press(Qt::Key_Return);
    clickRow(form, "Lstcheques", 1);
    int readable = 0;
    // Ever later, in steps that grow: each field that is shown asks the disk for news.
    for (int read = 0; readable == 0 && read < 100'000; read += read / 4 + 1) {
        SCOPED_TRACE("read " + std::to_string(read));
        anotherSaves(); // so that all is read anew
        failed_.clear();
        cutOff(FailingDisk::Refuses::reading, read);
        QTimer closer;
        closer.callOnTimeout([&] {
            if (auto* cheque = qobject_cast<Form*>(QApplication::activeModalWidget())) {
                ++readable;
                EXPECT_EQ(text(*cheque, "txtnumero"), "902");
                cheque->unload();
            }
        });
        closer.start(1);
        clickRow(form, "Lstcheques", 1);
        QApplication::processEvents();
        disk_.refused.clear();
        EXPECT_EQ(failed_.size() + static_cast<std::size_t>(readable), 1U);
        // From the menu it opens as ever.
        auto& entry = open<FrmLancasSFundos>();
        EXPECT_EQ(text(entry, "txtlancamento"), "");
        EXPECT_TRUE(control(entry, "txtcliente").isEnabled());
        entry.unload();
        activate(form);
    }
    EXPECT_EQ(readable, 1);
}

} // namespace
