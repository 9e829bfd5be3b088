#include "jet/Afterwards.h"

#include "jet/Check.h"
#include "jet/share/Journal.h"
#include "jet/share/Recovery.h"

using namespace jet;

std::uint64_t hashOf(const DiskImage& image) {
    std::uint64_t hash = 0;
    for (const auto& [name, bytes] : image)
        hash = hash * 31 + std::hash<std::string>{}(name) +
               std::hash<std::string_view>{}(
                   {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    return hash;
}

const Afterwards::Outcome& Afterwards::of(const DiskImage& image, const std::string& path) {
    ++points_;
    DiskImage own;
    for (const std::string& name : {path, Journal::pathFor(path).string()})
        if (const auto file = image.find(name); file != image.end())
            own.insert(*file);
    const auto [place, isNew] = known_.try_emplace(hashOf(own));
    if (isNew)
        place->second = open(own, path);
    return place->second;
}

Afterwards::Outcome Afterwards::open(const DiskImage& image, const std::string& path) {
    MemoryDisk disk(image);
    Outcome outcome;
    try {
        outcome.recovered = hasJournal(path, disk);
        Database file(path, on(disk));
        outcome.content = contentOf(file);
        if (file.readOnlyReason())
            outcome.problem = *file.readOnlyReason();
        else if (file.notice())
            outcome.problem = *file.notice();
    } catch (const Error& error) {
        outcome.problem = error.what();
    }
    if (disk.exists(Journal::pathFor(path)))
        outcome.problem += " The journal is still there.";
    if (!outcome.problem.empty())
        return outcome;
    const DiskImage left{
        {path, disk.image().at(path)}
    };
    if (checked_.insert(hashOf(left)).second)
        for (const Finding& finding : check(path, disk).findings)
            outcome.problem += finding.sentence + "\n";
    return outcome;
}

std::vector<DiskImage> imagesOf(const PowerCut& cut, std::mt19937_64& random, int rounds) {
    std::vector<DiskImage> images{cut.nothingMore(), cut.everything()};
    for (int round = 0; round < rounds; ++round)
        for (const unsigned kept : {10U, 30U, 50U, 70U, 90U, 97U})
            images.push_back(cut.some(random, kept));
    return images;
}
