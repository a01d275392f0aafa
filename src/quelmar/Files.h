/* The files the program reads and writes besides the project: scripts and
   clipboard files. */
#ifndef quelmar_Files_h
#define quelmar_Files_h

#include <string>

namespace quelmar {

/** Reads all of @p path into @p text; on failure sets @p error and returns false */
bool readInputFile(const std::string& path, std::string& text, std::string& error);

/**
@brief Writes the clipboard text @p text to @p path atomically

Never over the file @p project (the same file under any name), and over
another existing file only with @p force. On failure sets @p error and
returns false.
*/
bool writeClipboardFile(const std::string& path, const std::string& project, const std::string& text, bool force, std::string& error);

}

#endif
