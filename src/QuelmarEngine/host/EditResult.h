#ifndef QuelmarEngine_host_EditResult_h
#define QuelmarEngine_host_EditResult_h
/* What an action of the edit session came to: success, or one line a host can
   show, plus the warnings the action produced and what it made. */

#include <string>
#include <utility>
#include <vector>

namespace QuelmarEngine {

/**
@brief Outcome of an @ref EditSession action

Either success or a failure with a message: one line starting in lower case,
without an "error:" prefix. Either way it carries the warning lines that the
library wrote while the action ran. A successful action may also hand back
keys and a text, as each action documents.
*/
class [[nodiscard]] EditResult {
    public:
        /** Success with nothing to report */
        EditResult() = default;

        /** Failure with @p message */
        static EditResult failure(std::string message) {
            EditResult result;
            result.fail(std::move(message));
            return result;
        }

        /** Whether the action succeeded */
        bool isSuccess() const { return !_failed; }
        explicit operator bool() const { return !_failed; }

        /** Why the action failed; empty on success */
        const std::string& message() const { return _message; }

        /** Warning lines, without a "warning:" prefix */
        const std::vector<std::string>& warnings() const { return _warnings; }

        /** Keys of the records the action made, found, flagged or copied */
        const std::vector<std::string>& keys() const { return _keys; }

        /** Keys of the skins that a copy wrote beside the objects */
        const std::vector<std::string>& skinKeys() const { return _skinKeys; }

        /** The text an action produced, such as a clipboard text */
        const std::string& text() const { return _text; }

        /** Turns the result into a failure with @p message, keeping its warnings */
        EditResult& fail(std::string message) {
            _failed = true;
            _message = std::move(message);
            return *this;
        }

        EditResult& addWarning(std::string line) {
            _warnings.push_back(std::move(line));
            return *this;
        }

        EditResult& addKey(std::string key) {
            _keys.push_back(std::move(key));
            return *this;
        }

        EditResult& addSkinKey(std::string key) {
            _skinKeys.push_back(std::move(key));
            return *this;
        }

        EditResult& setText(std::string text) {
            _text = std::move(text);
            return *this;
        }

    private:
        std::string _message;
        std::vector<std::string> _warnings;
        std::vector<std::string> _keys;
        std::vector<std::string> _skinKeys;
        std::string _text;
        bool _failed{};
};

}

#endif
