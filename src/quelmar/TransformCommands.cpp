/* show, move, rotate and scale: an object's placement as a translation, a
   rotation and a scaling. */
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "Command.h"
#include "Objects.h"
#include "Program.h"

namespace quelmar {

namespace {

using Magnum::Vector3d;
using QuelmarEngine::TransformAmount;
using QuelmarEngine::TransformSpace;

/* Ten significant digits hide what double precision adds to round angles */
std::string number(const double value) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.10g", value);
    return std::string{text} == "-0" ? "0" : text;
}

std::string numbers(const Vector3d& vector) {
    return number(vector.x()) + " " + number(vector.y()) + " " + number(vector.z());
}

void printPlacement(const QuelmarEngine::Placement& placement, const char* const space) {
    const Magnum::Quaterniond& q = placement.rotation;
    std::cout << "  translation  " << numbers(placement.translation) << '\n'
              << "  rotation     " << numbers(QuelmarEngine::eulerDegrees(q)) << "  (degrees about the X, then the Y, then the Z axis of the " << space << ")\n"
              << "  quaternion   " << numbers(q.vector()) << ' ' << number(q.scalar()) << "  (x y z w)\n"
              << "  scale        " << numbers(placement.scaling) << '\n';
    if(placement.shears) std::cout << "  (the matrix also shears, which these leave out)\n";
}

/* The numbers of a move, rotate or scale; a scale may give one for all three */
bool parseVector(const Program& program, const std::vector<std::string>& words, const bool uniform, Vector3d& out) {
    if(words.size() != 4 && !(uniform && words.size() == 2))
        return program.fail(std::string{"give "} + (uniform ? "one number or three" : "three numbers") + " after the object");
    for(std::size_t i = 1; i != words.size(); ++i) {
        char* end;
        const double value = std::strtod(words[i].data(), &end);
        if(words[i].empty() || *end || !std::isfinite(value)) return program.fail("not a finite number: " + words[i]);
        out[i - 1] = value;
    }
    if(words.size() == 2) out = Vector3d{out[0], out[0], out[0]};
    return true;
}

typedef EditResult(EditSession::*TransformEdit)(Corrade::Containers::StringView, const Vector3d&, TransformSpace, TransformAmount);

bool runTransformEdit(Program& program, const Arguments& arguments, const TransformEdit edit, const bool uniform) {
    Vector3d values;
    if(!parseVector(program, arguments.positional, uniform, values)) return false;
    return program.report((program.session.*edit)(view(arguments.positional[0]), values,
        arguments.has("--world") ? TransformSpace::World : TransformSpace::Local,
        arguments.has("--by") ? TransformAmount::By : TransformAmount::To));
}

}

bool runShow(Program& program, const Arguments& arguments) {
    QuelmarEngine::ObjectPlacement placement;
    const EditResult found = program.session.findPlacement(view(arguments.positional[0]), placement);
    if(!program.report(found)) return false;
    const std::string& key = found.keys()[0];
    std::cout << key << ' ' << displayName(program, key.data()) << '\n' << "local\n";
    printPlacement(placement.local, "parent");
    std::cout << "world\n";
    printPlacement(placement.world, "world");
    std::cout.flush();
    return true;
}

bool runMove(Program& program, const Arguments& arguments) {
    return runTransformEdit(program, arguments, &EditSession::move, false);
}

bool runRotate(Program& program, const Arguments& arguments) {
    return runTransformEdit(program, arguments, &EditSession::rotate, false);
}

bool runScale(Program& program, const Arguments& arguments) {
    return runTransformEdit(program, arguments, &EditSession::scale, true);
}

}
