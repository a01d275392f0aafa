#include "Documents.h"

#include <random>

namespace QuelmarBenchmark {

std::string objectKey(const std::size_t i) {
    return "o" + std::to_string(i);
}

std::string projectText(const std::size_t objectCount) {
    std::string out = "{\"objects\":{";
    for(std::size_t i = 0; i != objectCount; ++i) {
        out += (i ? ",\"" : "\"") + objectKey(i) + "\":{\"name\":\"Object " + std::to_string(i) + "\",\"parent\":\"";
        if(i % 16) out += objectKey(i - i % 16);
        out += "\",\"transformation\":[1,0,0,0,0,1,0,0,0,0,1,0," + std::to_string(i % 100) + ",0,0,1]}";
    }
    out += "},\"skins\":{";
    for(std::size_t i = 0; i != objectCount/10; ++i) {
        out += (i ? ",\"s" : "\"s") + std::to_string(i) + "\":{\"joints\":[";
        for(std::size_t j = 0; j != 4; ++j) out += (j ? ",\"" : "\"") + objectKey((i*10 + j) % objectCount) + "\"";
        out += "]}";
    }
    return out + "}}";
}

std::vector<std::string> valuePaths(const std::size_t objectCount) {
    std::mt19937 random;
    std::vector<std::string> out;
    for(std::size_t i = 0; i != 1024; ++i)
        out.push_back("/objects/" + objectKey(random() % objectCount) + "/transformation/12");
    return out;
}

}
