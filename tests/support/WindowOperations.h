#pragma once

#include "support/ShopTest.h"

#include <functional>
#include <string>
#include <vector>

/// What a clerk does in each window, one operation after the other, over a shop on a server as
/// large as is asked for: for what each costs.
class WindowOperations : public ShopTest {
protected:
    WindowOperations(int clients, int cheques)
        : ShopTest(Kept::onServer()), clients_(clients), cheques_(cheques) {}
    /// Makes the shop's rows; every question of a window is answered with yes.
    void SetUp() override;
    void TearDown() override;

    struct Operation {
        const char* window;
        const char* name;
        std::function<void()> prepare;
        std::function<void()> work; ///< what costs
        int times = 1;              ///< as often, one after the other
        unsigned waits = 5;         ///< for the server, at most
    };
    [[nodiscard]] std::vector<Operation> operations() const;

private:
    using Operations = std::vector<Operation>;
    void fill() const;
    void another() const;
    template <class Window>
    void addWalk(Operations& all, const char* window) const;
    void addRegisters(Operations& all) const;
    void addEntry(Operations& all) const;
    void addBounced(Operations& all) const;
    void addLists(Operations& all) const;
    void addReports(Operations& all) const;
    void addAgenda(Operations& all) const;

    static void closeAll();
    template <class Window>
    static void show() {
        open<Window>();
    }
    template <class Window>
    static void reopen();
    template <class Window>
    static void walked();
    template <class Window>
    static void press(const char* button);
    template <class Window>
    static void choose(const char* list, const QString& name);
    static void leave();
    static void openList();
    static void enterCheque(const char* numero);
    static void chooseFromList();

    int clients_;
    int cheques_;
    std::string address_; ///< of the server itself
};
