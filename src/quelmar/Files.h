/* Reading and writing the clipboard files that copy and paste take. */
#ifndef quelmar_Files_h
#define quelmar_Files_h

#include <string>

namespace quelmar {

/** Reads all of @p path into @p text; on failure sets @p error and returns false */
bool readFile(const std::string& path, std::string& text, std::string& error);

/** Writes @p text to @p path; on failure sets @p error and returns false */
bool writeFile(const std::string& path, const std::string& text, std::string& error);

}

#endif
