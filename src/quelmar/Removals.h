/* Removals of records that others may still name: purge and delete-resource. */
#ifndef quelmar_Removals_h
#define quelmar_Removals_h

#include "Program.h"

namespace quelmar {

/** As @ref Program::report(), pointing to --force when references stopped a removal made without it */
bool reportRemoval(const Program& program, const EditResult& result, bool forced);

}

#endif
