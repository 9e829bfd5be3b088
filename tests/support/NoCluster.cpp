#include "support/Cluster.h"

#include <stdexcept>

struct Cluster::Parts {};

std::string Cluster::absence() { return "Built without libpq: nothing to be tested with a server"; }
Cluster& Cluster::instance(std::span<const jet::TableSpec> /*tables*/,
                           std::span<const jet::TableSpec> /*further*/) {
    throw std::runtime_error(absence());
}
Cluster::~Cluster() = default;
std::string Cluster::newShop() { return {}; }
std::string Cluster::newDatabase() { return {}; }
std::string Cluster::answer(const std::string& /*address*/, const std::string& /*sql*/) {
    return {};
}
void Cluster::relate(const std::string& /*address*/, const std::string& /*change*/) {}
void Cluster::giveBack(const std::string& /*address*/) {}
void Cluster::crash() {}
