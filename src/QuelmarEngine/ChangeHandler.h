#ifndef QuelmarEngine_ChangeHandler_h
#define QuelmarEngine_ChangeHandler_h
/* Change handlers: what the host registers on the change manager to hear of
   the changes that reach the project document. */

#include <functional>
#include <utility>
#include <Corrade/Containers/ArrayView.h>
#include <Corrade/Containers/String.h>

#include "QuelmarEngine/QuelmarEngine.h"

namespace QuelmarEngine {

/**
@brief Base of the change handlers

The manager calls @ref handle() once for every component of a change's path
that equals the key the handler was registered under.
*/
class ChangeHandler {
    public:
        /**
         * @brief A change reached the document
         *
         * @p path holds the components of the change's path split at "/",
         * the first one empty; the last one ends with the path's terminating
         * zero byte, which its size counts.
         */
        virtual void handle(const Change& change, Containers::ArrayView<const Containers::String> path) = 0;

        virtual ~ChangeHandler() = default;
};

/** A @ref ChangeHandler that calls a function */
class FunctionChangeHandler: public ChangeHandler {
    public:
        typedef std::function<void(const Change&, Containers::ArrayView<const Containers::String>, void*)> Function;

        explicit FunctionChangeHandler(Function function, void* userData = nullptr): function{std::move(function)}, userData{userData} {}

        /** Calls @ref function; an empty one throws @cpp std::bad_function_call @ce */
        void handle(const Change& change, Containers::ArrayView<const Containers::String> path) override {
            function(change, path, userData);
        }

        Function function;
        /** Passed to @ref function as is; not owned */
        void* userData;
};

}

#endif
