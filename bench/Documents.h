#ifndef QuelmarBenchmark_Documents_h
#define QuelmarBenchmark_Documents_h
/* The project documents the benchmarks edit: N objects with a name, a parent
   and a transformation of 16 numbers, and N/10 skins. */

#include <cstddef>
#include <string>
#include <vector>

namespace QuelmarBenchmark {

/* Key of object @p i */
std::string objectKey(std::size_t i);

/* One object in sixteen is under the root, the others under it: a broad,
   shallow scene with the map in tree order */
std::string projectText(std::size_t objectCount);

/* Paths of "transformation" numbers of objects spread over the map */
std::vector<std::string> valuePaths(std::size_t objectCount);

}

#endif
