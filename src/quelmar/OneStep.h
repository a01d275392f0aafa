/* Making the pushes of a command that opens no group of its own one undo step. */
#ifndef quelmar_OneStep_h
#define quelmar_OneStep_h

#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

namespace quelmar {

/**
Runs @p pushes inside one change group. Only for commands that open no
group themselves: a nested group would orphan the outer one's records. A
group with no record in it leaves no step behind.
*/
template<class Pushes> void inOneStep(QuelmarEngine::QuelmarEditor& editor, Pushes&& pushes) {
    editor.changeManager->beginGroup();
    pushes();
    editor.changeManager->commit();
}

}

#endif
