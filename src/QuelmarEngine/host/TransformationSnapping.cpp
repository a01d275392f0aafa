#include "QuelmarEngine/host/TransformationSnapping.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace QuelmarEngine {

rapidjson::Value snappedNumber(const double value, const double tolerance, const rapidjson::Value* const before, JsonAllocator& allocator) {
    if(before && before->IsNumber() && std::abs(before->GetDouble() - value) <= tolerance)
        return rapidjson::Value{*before, allocator};
    const double whole = std::round(value);
    if(std::abs(whole - value) <= tolerance && std::abs(whole) <= 9007199254740992.0)
        return rapidjson::Value{static_cast<std::int64_t>(whole)};
    /* A decimal stands for the value only when far fewer digits than the
       tolerance allows reach it, which a value that just happens to lie
       there rarely does; a thousand times fewer */
    const int maxDigits = tolerance > 0.0 ? int(std::floor(std::log10(std::abs(value)/tolerance))) - 3 : 0;
    for(int digits = 1; digits <= std::min(maxDigits, 17); ++digits) {
        char text[32];
        *std::to_chars(text, text + sizeof(text) - 1, value, std::chars_format::general, digits).ptr = '\0';
        const double decimal = std::strtod(text, nullptr);
        if(std::abs(decimal - value) <= tolerance) return rapidjson::Value{decimal};
    }
    return rapidjson::Value{value};
}

rapidjson::Value snappedTransformation(const Magnum::Matrix4d& matrix, const Magnum::Vector4d& tolerances, const rapidjson::Value* before, JsonAllocator& allocator) {
    if(before && !(before->IsArray() && before->Size() == 16)) before = nullptr;
    const rapidjson::Value identity[]{rapidjson::Value{0}, rapidjson::Value{1}};
    rapidjson::Value out{rapidjson::kArrayType};
    out.Reserve(16, allocator);
    for(rapidjson::SizeType i = 0; i != 16; ++i) {
        const rapidjson::Value& previous = before ? (*before)[i] : identity[i/4 == i % 4];
        out.PushBack(snappedNumber(matrix[i/4][i % 4], tolerances[i/4], &previous, allocator), allocator);
    }
    return out;
}

}
