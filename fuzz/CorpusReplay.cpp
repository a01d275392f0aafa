/* Feeds every file of the corpus folders given on the command line to a fuzz
   target, so that the normal build replays the corpora without a fuzzer */

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    std::vector<std::filesystem::path> files;
    for(int i = 1; i != argc; ++i) {
        if(!std::filesystem::is_directory(argv[i])) files.emplace_back(argv[i]);
        else for(const auto& entry: std::filesystem::directory_iterator{argv[i]}) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for(const std::filesystem::path& file: files) {
        std::ifstream in{file, std::ios::binary};
        /* Named first, so that a crash says which file it was */
        std::fprintf(stderr, "%s\n", file.c_str());
        if(!in) return 1;
        const std::string data{std::istreambuf_iterator<char>{in}, {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(data.data()), data.size());
    }
    std::printf("replayed %zu files\n", files.size());
    return files.empty();
}
