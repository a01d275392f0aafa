#ifndef QuelmarEngine_host_EditorData_h
#define QuelmarEngine_host_EditorData_h
/* The editor state: the project file and the selection. */

#include <cstdint>
#include <Corrade/Containers/Array.h>
#include <Corrade/Containers/ArrayView.h>

#include "QuelmarEngine/host/BitSetView.h"
#include "QuelmarEngine/host/Id.h"
#include "QuelmarEngine/host/ProjectFile.h"
#include "QuelmarEngine/host/RefreshHook.h"

namespace QuelmarEngine {

/**
@brief Project file and selection

The selection is a bit set over object indices with one bit per index the
host has handed out. Every read of it first calls the refresh hook, so that
bits of objects that are gone are cleared before anyone sees them.
*/
class EditorData {
    public:
        EditorData();

        EditorData(const EditorData&) = delete;
        EditorData& operator=(const EditorData&) = delete;

        /** Whether object @p id is selected; false beyond the selection's size */
        bool isSelected(Data::Id id) const;

        /** Sets or clears the bit of @p id, leaving the others; nothing beyond the selection's size */
        void selectObject(Data::Id id, bool selected);

        /** Number of bits in the selection */
        std::uint64_t selectionSize() const;

        /** The words of the selection, for reading and clearing */
        Containers::ArrayView<std::uint32_t> selectionWords();

        /** The selection as a view */
        BitSetView selection() const;

        /**
         * @brief Changes the number of bits
         *
         * Bits below both sizes stay, the others are cleared. No refresh;
         * for the host's rebuild.
         */
        void resizeSelection(std::uint64_t size);

        /** Clears every bit that is clear in @p kept too; no refresh. For the host's refresh. */
        void keepSelected(Containers::ArrayView<const std::uint32_t> kept);

        /** How many times a bit was set; no refresh */
        std::uint64_t selectCount() const { return _selectCount; }

        /** What every read of the selection calls first */
        void setRefreshHook(RefreshHook hook) { _refresh = hook; }

        ProjectFile project;

    private:
        RefreshHook _refresh;
        std::uint64_t _selectionSize{};
        std::uint64_t _selectCount{};
        Containers::Array<std::uint32_t> _selectionWords;
};

}

#endif
