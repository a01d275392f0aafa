/* Resident memory of an edit session after many duplicate-and-undo cycles,
   with and without moving the document into a fresh pool between commands
   (the old pool's memory reused or released to the system), and what one
   such compaction costs. Prints the figures; asserts nothing. */
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "QuelmarEngine/host/EditSession.h"

#include "Documents.h"

using namespace QuelmarEngine;

namespace {

/* VmRSS of this process in kB, or 0 where /proc doesn't say */
std::size_t residentKilobytes() {
    std::ifstream status{"/proc/self/status"};
    for(std::string line; std::getline(status, line); )
        if(line.compare(0, 6, "VmRSS:") == 0) return std::strtoull(line.data() + 6, nullptr, 10);
    return 0;
}

double millisecondsSince(const std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

bool check(const EditResult& result) {
    if(!result) std::fprintf(stderr, "error: %s\n", result.message().data());
    return bool(result);
}

}

int main(int argc, char** argv) {
    std::size_t objects = 50000, cycles = 1000, batch = 1000;
    bool compaction = true;
    FreedMemory freed = FreedMemory::Reuse;
    for(int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if(argument == "--no-compaction") compaction = false;
        else if(argument == "--release") freed = FreedMemory::Release;
        else if(i + 1 < argc && (argument == "--objects" || argument == "--cycles" || argument == "--batch")) {
            const std::size_t value = std::strtoull(argv[++i], nullptr, 10);
            (argument == "--objects" ? objects : argument == "--cycles" ? cycles : batch) = value;
        } else {
            std::fprintf(stderr, "usage: %s [--objects N] [--cycles N] [--batch N] [--no-compaction | --release]\n", argv[0]);
            return 2;
        }
    }
    if(batch > objects) batch = objects;

    EditSession session;
    const std::string text = QuelmarBenchmark::projectText(objects);
    const auto load = std::chrono::steady_clock::now();
    if(!check(session.openText({text.data(), text.size()}))) return 1;
    const double loadTime = millisecondsSince(load);
    std::vector<std::string> keys;
    for(std::size_t i = 0; i != batch; ++i) keys.push_back(QuelmarBenchmark::objectKey(i));
    std::vector<Containers::StringView> references;
    for(const std::string& key: keys) references.emplace_back(key.data(), key.size());
    std::printf("%zu objects, %zu cycles of duplicating and undoing %zu, %s\n", objects, cycles, batch,
        !compaction ? "never compacting" : freed == FreedMemory::Release ?
            "compacting when wasteful between commands, releasing the memory" : "compacting when wasteful between commands");
    std::printf("after the load (%.0f ms): VmRSS %zu kB, pool %zu kB\n", loadTime, residentKilobytes(), session.poolSize()/1024);

    std::size_t compactions = 0;
    double compactionTime = 0.0, longest = 0.0;
    const auto betweenCommands = [&] {
        if(!compaction) return;
        const auto start = std::chrono::steady_clock::now();
        if(!session.compactIfWasteful(freed)) return;
        const double time = millisecondsSince(start);
        ++compactions;
        compactionTime += time;
        if(time > longest) longest = time;
    };
    const auto start = std::chrono::steady_clock::now();
    for(std::size_t i = 0; i != cycles; ++i) {
        if(!check(session.select({references.data(), references.size()}))) return 1;
        if(!check(session.duplicate(SelectionExtent::Objects))) return 1;
        betweenCommands();
        if(!check(session.undo())) return 1;
        betweenCommands();
    }
    std::printf("after the cycles (%.0f ms): VmRSS %zu kB, pool %zu kB, estimated waste %zu kB\n",
        millisecondsSince(start), residentKilobytes(), session.poolSize()/1024, session.poolWaste()/1024);
    if(compactions) std::printf("%zu compactions between commands, %.1f ms each on average, %.1f ms at most\n",
        compactions, compactionTime/compactions, longest);

    const auto once = std::chrono::steady_clock::now();
    session.compact(freed);
    std::printf("one compaction now: %.1f ms; then VmRSS %zu kB, pool %zu kB\n",
        millisecondsSince(once), residentKilobytes(), session.poolSize()/1024);
    return 0;
}
