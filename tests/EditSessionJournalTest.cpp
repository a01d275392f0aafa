/* The recovery journal and the file on disk: a session killed at any moment
   recovers to its last completed step, a damaged journal tail is dropped
   whole, and a file changed by another program isn't written over silently */
#include <chrono>
#include <csignal>
#include <cstdio>
#include <functional>
#include <random>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <gmock/gmock.h>
#include <Corrade/Utility/FormatStl.h>

#include "QuelmarEngine/host/EditSession.h"
#include "TestSupport.h"

using namespace QuelmarEngine;
using namespace QuelmarTest;

namespace {

/* Root objects a and b, with @p children objects below a */
std::string scene(const std::size_t children) {
    std::string json = R"({"objects":{"a":{"name":"A"},"b":{"name":"B"})";
    for(std::size_t i = 0; i != children; ++i) json += Utility::format(R"(,"c{}":{{"name":"C{}","parent":"a"}})", i, i).data();
    return json + R"(},"materials":{"m":{"color":1}}})";
}

struct EditSessionJournalTest: testing::Test {
    /* Opens @p file with keys that every session hands out alike */
    static EditResult open(EditSession& session, const std::string& path) {
        EditResult result = session.open({path.data(), path.size()});
        session.editor().data.project.setIdGenerator([count = 0]() mutable { return Containers::String{Utility::format("g{}", ++count).data()}; });
        return result;
    }

    static std::string json(EditSession& session) {
        return session.editor().data.project.toJson().data();
    }

    TemporaryFolder folder;
    const std::string file = folder/"scene.json", journal = folder/".scene.json.journal";
};

EditResult select(EditSession& session, const char* key) {
    const Containers::StringView keys[]{key};
    return session.select(keys);
}

/* Value edits, duplicates of whole trees, saves, undo and redo within the
   journal and past the saved state */
const std::function<EditResult(EditSession&)> Script[]{
    [](EditSession& s) { return s.set("/objects/a/name", "\"First\""); },
    [](EditSession& s) { EXPECT_TRUE(select(s, "a")); return s.duplicate(SelectionExtent::Trees); },
    [](EditSession& s) { return s.addObject("N", "a"); },
    [](EditSession& s) { return s.save(); },
    [](EditSession& s) { return s.set("/materials/m/color", "[2, 0.1]"); },
    [](EditSession& s) { return s.undo(2); },
    [](EditSession& s) { return s.redo(1); },
    [](EditSession& s) { return s.deleteObject("a"); },
    [](EditSession& s) { return s.remove("/materials/m"); },
    [](EditSession& s) { return s.undo(2); },
    [](EditSession& s) { EXPECT_TRUE(select(s, "b")); return s.duplicate(SelectionExtent::Objects); },
    [](EditSession& s) { return s.undo(1); },
    [](EditSession& s) { return s.redo(1); },
    [](EditSession& s) { EXPECT_TRUE(select(s, "a")); return s.duplicate(SelectionExtent::Trees); },
    [](EditSession& s) { return s.save(); },
    [](EditSession& s) { return s.set("/objects/b/name", "\"Last\""); },
    [](EditSession& s) { return s.undo(3); },
    [](EditSession& s) { return s.set("/materials/new", "{\"color\": 3}"); },
};

}

TEST_F(EditSessionJournalTest, KilledSessionRecoversItsLastCompletedStep) {
    const std::string original = scene(40);
    /* The document after each step and how long each step took, from a
       session left to finish */
    std::vector<std::string> expected;
    std::vector<long> durations;
    {
        writeText(file, original);
        EditSession session;
        ASSERT_TRUE(open(session, file));
        expected.push_back(json(session));
        for(const auto& step: Script) {
            const auto started = std::chrono::steady_clock::now();
            ASSERT_TRUE(step(session));
            durations.push_back(long(std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - started).count()));
            expected.push_back(json(session));
        }
    }

    /* Each round kills at a random moment of one step, every step in turn */
    std::mt19937 random{1};
    for(std::size_t round = 0; round != 200; ++round) {
        const std::size_t target = round % std::size(Script);
        writeText(file, original);
        std::remove(journal.data());
        /* The session takes a step when told, and says when it is done */
        int go[2], done[2];
        ASSERT_EQ(::pipe(go), 0);
        ASSERT_EQ(::pipe(done), 0);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        char buffer[64];
        if(!child) {
            EditSession session;
            if(!open(session, file)) ::_exit(1);
            for(const auto& step: Script) {
                if(::read(go[0], buffer, 1) != 1 || !step(session) || ::write(done[1], "", 1) != 1) ::_exit(1);
            }
            for(;;) ::pause();
        }
        ::close(go[0]);
        ::close(done[1]);
        for(std::size_t i = 0; i != target; ++i)
            ASSERT_TRUE(::write(go[1], "", 1) == 1 && ::read(done[0], buffer, 1) == 1) << "the scripted session failed";
        ASSERT_EQ(::write(go[1], "", 1), 1);
        ::usleep(useconds_t(std::uniform_int_distribution<long>{0, durations[target]*3/2}(random)));
        ::kill(child, SIGKILL);
        int status;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the scripted session failed";
        const std::size_t completed = target + std::size_t(::read(done[0], buffer, sizeof(buffer)));
        ::close(done[0]);
        ::close(go[1]);

        EditSession session;
        ASSERT_TRUE(session.open({file.data(), file.size()}));
        if(session.isReadOnly()) {
            const EditResult recovered = session.recover();
            /* Killed between a save's rename and its removal of the journal */
            if(!recovered) {
                EXPECT_EQ(recovered.message(), "the journal was written for another version of " + file + " and can only be discarded");
                ASSERT_TRUE(session.discardJournal());
            }
        }
        /* The step under way when the kill came may have made it into the journal */
        const std::string document = json(session);
        EXPECT_TRUE(document == expected[completed] || (completed + 1 < expected.size() && document == expected[completed + 1]))
            << "round " << round << ", killed after " << completed << " steps";
        /* Every recovered step can be undone, back to the saved file */
        EXPECT_TRUE(!session.undoCount() || session.undo(session.undoCount()));
        EXPECT_TRUE(session.isSaved());
        EditSession saved;
        ASSERT_TRUE(saved.open({file.data(), file.size()}));
        EXPECT_EQ(json(session), json(saved));
    }
}

/* Whatever damages the journal's end, recovery keeps the entries before it
   whole and goes on from there */
TEST_F(EditSessionJournalTest, DamagedTailIsDroppedWhole) {
    writeText(file, scene(2));
    std::vector<std::string> documents;
    std::vector<std::size_t> sizes;
    {
        EditSession session;
        ASSERT_TRUE(open(session, file));
        documents.push_back(json(session));
        for(const char* name: {"\"One\"", "\"Two\"", "\"Three\""}) {
            ASSERT_TRUE(session.set("/objects/a/name", name));
            documents.push_back(json(session));
            sizes.push_back(std::size_t(readText(journal).size()));
        }
    }
    const std::string intact = readText(journal);
    const std::size_t last = sizes[1];
    const struct {
        const char* name;
        std::function<void(std::string&)> damage;
        std::size_t steps;
    } data[]{
        {"cut inside the last entry", [](std::string& j) { j.resize(j.size() - 3); }, 2},
        {"cut inside the last frame's length", [&](std::string& j) { j.resize(last + 2); }, 2},
        {"a byte changed in the last entry", [](std::string& j) { j[j.size() - 5] ^= 0x20; }, 2},
        {"a wrong length in the last frame", [&](std::string& j) { j[last] ^= 0x01; }, 2},
        {"a byte changed in the middle entry", [&](std::string& j) { j[last - 3] ^= 0x01; }, 1},
        {"garbage after the last entry", [](std::string& j) { j += std::string{"\x05\0\0\0garbage", 11}; }, 3},
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.name);
        std::string damaged = intact;
        row.damage(damaged);
        writeText(journal, damaged);
        const std::size_t dropped = damaged.size() - sizes[row.steps - 1];
        {
            EditSession session;
            const EditResult opened = session.open({file.data(), file.size()});
            EXPECT_THAT(opened.warnings(), testing::ElementsAre(Utility::format("the journal {} holds {} {} of unsaved work from a session "
                "that ended without saving, and a damaged tail that recovery drops; the project is read-only until it is recovered or discarded",
                journal, row.steps, row.steps == 1 ? "entry" : "entries").data()));
            EXPECT_THAT(session.recover().warnings(), testing::ElementsAre(Utility::format("the journal's last {} bytes were torn or damaged and are dropped", dropped).data()));
            EXPECT_EQ(json(session), documents[row.steps]);
            /* The journal goes on after the last whole entry */
            ASSERT_TRUE(session.set("/objects/b/name", "\"Again\""));
            documents.push_back(json(session));
        }
        EditSession reopened;
        ASSERT_TRUE(reopened.open({file.data(), file.size()}));
        EXPECT_THAT(reopened.recover().warnings(), testing::IsEmpty());
        EXPECT_EQ(json(reopened), documents.back());
        documents.pop_back();
    }
}

/* A journal found at open leaves the project read-only until it is
   recovered or discarded; one written for another version of the file can
   only be discarded */
TEST_F(EditSessionJournalTest, ReadOnlyUntilRecoveredOrDiscarded) {
    const char* const readOnly = "the project is read-only until its journal is recovered or discarded";
    for(const bool stale: {false, true}) {
        SCOPED_TRACE(stale ? "stale" : "current");
        writeText(file, scene(1));
        {
            EditSession session;
            ASSERT_TRUE(open(session, file));
            ASSERT_TRUE(session.addObject("N", "a"));
            ASSERT_TRUE(session.addObject("M", "a"));
            ASSERT_TRUE(session.undo());
        }
        if(stale) writeText(file, scene(1) + " ");
        EditSession session;
        const EditResult opened = session.open({file.data(), file.size()});
        EXPECT_THAT(opened.warnings(), testing::ElementsAre(stale ?
            "the journal " + journal + " was written for another version of " + file + " and can't be replayed; the project is read-only until the journal is discarded" :
            "the journal " + journal + " holds 3 entries of unsaved work from a session that ended without saving; the project is read-only until it is recovered or discarded"));
        EXPECT_TRUE(session.isReadOnly());
        /* Set, undo, redo, save and save as */
        for(const EditResult& refused: {session.set("/objects/a/name", "\"X\""), session.undo(), session.redo(),
                                        session.save(DiskChanges::Overwrite), session.saveAs({file.data(), file.size()})})
            EXPECT_EQ(refused.message(), readOnly);
        if(stale) EXPECT_EQ(session.recover().message(), "the journal was written for another version of " + file + " and can only be discarded");
        else {
            ASSERT_EQ(session.recover().text(), "replayed 3 entries: 1 step to undo, 1 to redo");
            ASSERT_TRUE(session.redo());
            EXPECT_EQ(session.history().steps()[1].label, "add M a");
            ASSERT_TRUE(session.undo(2));
            EXPECT_TRUE(session.isSaved());
        }
        EXPECT_TRUE(session.discardJournal());
        EXPECT_FALSE(session.isReadOnly());
        EXPECT_NE(::access(journal.data(), F_OK), 0);
        EXPECT_EQ(session.discardJournal().message(), "there is no journal to discard");
    }
}

/* A save refuses to write over what another program changed, naming it */
TEST_F(EditSessionJournalTest, SaveRefusesOutsideChanges) {
    const struct {
        const char* name;
        std::function<void(const std::string&)> change;
        std::string message;
    } data[]{
        {"nothing", [](const std::string&) {}, ""},
        {"only the time", [](const std::string& path) { ::utimensat(AT_FDCWD, path.data(), nullptr, 0); }, ""},
        {"grown", [](const std::string& path) { writeText(path, readText(path) + "\n"); },
            Utility::format("its size ({} -> {} bytes), modification time and content", scene(1).size(), scene(1).size() + 1).data()},
        {"same size and time", [](const std::string& path) {
            struct stat info;
            ::stat(path.data(), &info);
            std::string text = readText(path);
            text[text.find('A')] = 'Z';
            writeText(path, text);
            const timespec times[]{info.st_atim, info.st_mtim};
            ::utimensat(AT_FDCWD, path.data(), times, 0);
        }, "its content"},
        {"removed", [](const std::string& path) { std::remove(path.data()); }, "it was removed"},
    };
    for(const auto& row: data) {
        SCOPED_TRACE(row.name);
        writeText(file, scene(1));
        EditSession session;
        ASSERT_TRUE(session.open({file.data(), file.size()}));
        ASSERT_TRUE(session.set("/objects/b/name", "\"Mine\""));
        ::usleep(10000);
        row.change(file);
        EXPECT_EQ(session.fileChangeOnDisk(), row.message);
        const EditResult saved = session.save();
        EXPECT_EQ(saved.message(), row.message.empty() ? "" : file + " changed on disk since this session read or wrote it: " + row.message);
        ASSERT_TRUE(saved || session.save(DiskChanges::Overwrite));
        EXPECT_EQ(session.fileChangeOnDisk(), "");
        EXPECT_NE(readText(file).find("Mine"), std::string::npos);
    }
    /* A project that was new when opened: a file made there meanwhile */
    std::remove(file.data());
    EditSession session;
    ASSERT_TRUE(session.open({file.data(), file.size()}));
    writeText(file, "{}");
    EXPECT_EQ(session.save().message(), file + " changed on disk since this session read or wrote it: a file appeared there");
}
