#pragma once

#include "controls/window/NavigationBar.h"
#include "support/ShopTest.h"

#include <initializer_list>
#include <string>
#include <utility>

/// A shop of three clients and two banks, for the tests of the windows that cheques are entered in,
/// and what these windows have in common.
class ChequeShop : public ShopTest {
protected:
    using ShopTest::ShopTest;
    void SetUp() override {
        ShopTest::SetUp();
        given("cliente_fornecedor",
              {client("Bento Dias", 0), client("Ana Costa", 100), client("Carla Reis", 1500)});
        given("bancos", {
                            {{"cod_banco", number(104)}, {"nome", words("Banco Norte")}},
                            {{"cod_banco", number(237)}, {"nome", words("Agrobanco")}  }
        });
    }

    // The codes that the rows above get.
    static constexpr int kBento = 1;
    static constexpr int kAna = 2;
    static constexpr int kCarla = 3;
    static constexpr int kNorte = 1;
    static constexpr int kAgro = 2;

    static jet::Value money(std::int64_t reais, int cents = 0) {
        return jet::Currency{(reais * 100 + cents) * 100};
    }
    static Row client(const char* name, std::int64_t limit = 0) {
        return {
            {"nome",           words(name) },
            {"tipo",           yes(true)   },
            {"limite_credito", money(limit)}
        };
    }

    /// The next message box must be the question before a cheque is deleted.
    void expectDeleteQuestion(MessageAnswer answer) {
        expectMessage("Exclusão", "Deseja realmente excluir este registro ?", MessageIcon::critical,
                      MessageButtons::yesNo, answer);
    }
    /// What labels, boxes and buttons say.
    static void expectTexts(const QWidget& form,
                            std::initializer_list<std::pair<const char*, const char*>> texts) {
        for (const auto& [name, says] : texts)
            EXPECT_EQ(text(form, name), says) << name;
        EXPECT_EQ(control(form, "CmdNovo").toolTip(), "Novo Registro");
    }
    /// How many characters can be typed into a box.
    static void expectRoom(QWidget& form,
                           std::initializer_list<std::pair<const char*, int>> boxes) {
        for (const auto& [box, holds] : boxes) {
            type(form, box, QString(holds + 1, 'x'));
            EXPECT_EQ(text(form, box).size(), holds) << box;
        }
    }
    /// Walks over three stored cheques, of Ana, Bento and Carla, and beyond both ends.
    static void expectWalk(QWidget& form, const char* nameBox) {
        const struct {
            int button;
            const char* key;
            const char* name;
        } steps[] = {
            {0, "1", "Ana Costa" },
            {1, "1", "Ana Costa" },
            {2, "2", "Bento Dias"},
            {2, "3", "Carla Reis"},
            {2, "3", "Carla Reis"},
            {1, "2", "Bento Dias"},
            {3, "3", "Carla Reis"},
            {0, "1", "Ana Costa" },
        };
        for (const auto& [button, key, name] : steps) {
            click(form, "btnNavegacao", button);
            EXPECT_EQ(text(form, "txtlancamento"), key);
            EXPECT_EQ(text(form, nameBox), name);
        }
    }
    /// Presses each button of a window over a table without cheques.
    static void walkNowhere(QWidget& form) {
        for (int i = 0; i < NavigationBar::kCount; ++i)
            click(form, "btnNavegacao", i);
    }
};
