/* End-to-end tests of the quelmar program: the built binary run on
   temporary copies of the examples folder. */
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cctype>
#include <cstring>
#include <regex>
#include <string>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
#include <functional>
#include <gtest/gtest.h>

#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/JsonWriter.h"
#include "TestSupport.h"

using namespace QuelmarTest;

namespace {

std::string shellQuoted(const std::string& text) {
    return "'" + std::regex_replace(text, std::regex{"'"}, "'\\''") + "'";
}

/* New keys are a per-run prefix and a counter: dropping the prefix makes
   output comparable from run to run */
std::string withStableKeys(const std::string& text) {
    std::smatch match;
    if(!std::regex_search(text, match, std::regex{"\\b([0-9a-z]{8,9})00[0-9a-z]{2}\\b"})) return text;
    return std::regex_replace(text, std::regex{"\\b" + match[1].str() + "([0-9a-z]{4})\\b"}, "K$1");
}

struct Outcome {
    int status;
    std::string out, err;
};

class QuelmarProgramTest: public testing::Test {
    protected:
        void SetUp() override {
            for(auto [name, value]: {std::pair{"QUELMAR_BINARY", &binary}, {"QUELMAR_SOURCE_DIR", &source}}) {
                ASSERT_TRUE(std::getenv(name) && *std::getenv(name)) << name << " is not set; run the test through ctest";
                *value = std::getenv(name);
            }
            ASSERT_EQ(std::system(("cp -r " + shellQuoted(source + "/examples") + "/* " + shellQuoted(dir)).data()), 0);
        }

        std::string path(const std::string& name) const { return folder/name; }

        Outcome outcome(const int status) const {
            return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readText(path(".stdout")), readText(path(".stderr"))};
        }

        /* Runs the program with @p input on a pipe, after @p shell (limits, signal dispositions) */
        Outcome run(const std::string& arguments, const std::string& input = {}, const std::string& shell = {}) const {
            writeText(path(".stdin"), input);
            return outcome(std::system(("cd " + shellQuoted(dir) + " && " + shell + " " + shellQuoted(binary) + " " + arguments +
                " <.stdin >.stdout 2>.stderr").data()));
        }

        /* Runs the program on scene.json at a terminal, with the environment
           @p env. Each of @p keys is typed once the program waits at a prompt
           again; a number there is a signal to send instead. Returns all
           that the terminal showed. With @p toFiles the output goes to files,
           which are returned, and the keys are typed at once, then Control-D */
        Outcome runAtTerminal(const std::vector<std::string>& keys, const std::vector<std::string>& env = {}, const bool toFiles = false) const {
            int master;
            const pid_t child = ::forkpty(&master, nullptr, nullptr, nullptr);
            if(child == 0) {
                ::setenv("XDG_STATE_HOME", path("state").data(), 1);
                for(const std::string& variable: env) ::putenv(const_cast<char*>(variable.data()));
                if(::chdir(dir.data()) == 0 && (!toFiles || (std::freopen(".stdout", "w", stdout) && std::freopen(".stderr", "w", stderr))))
                    ::execl(binary.data(), binary.data(), "scene.json", static_cast<char*>(nullptr));
                ::_exit(127);
            }
            if(child < 0) return {-1, {}, "no terminal"};
            std::string shown;
            std::size_t typed = 0, prompts = 0;
            if(toFiles) for(const std::string& key: keys) typed += std::size_t(::write(master, key.data(), key.size()) == ssize_t(key.size()));
            if(toFiles && ::write(master, "\x04", 1) != 1) typed = 0;
            /* Only a guard against a hang, far beyond what any row takes */
            const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds{60};
            for(char buffer[4096]; std::chrono::steady_clock::now() < giveUp; ) {
                pollfd output{master, POLLIN, 0};
                if(::poll(&output, 1, 100) == 0) {
                    /* Typed only once the terminal has been quiet a while
                       after a new prompt, so that the line editor has taken
                       the terminal over: a slow build may print the prompt
                       before it does, and Control-D typed in between would
                       go to the terminal's own line discipline */
                    const std::size_t at = shown.find("quelmar> ", prompts);
                    if(at == std::string::npos || typed == keys.size()) continue;
                    prompts = at + 1;
                    const std::string& key = keys[typed++];
                    if(!key.empty() && std::isdigit(static_cast<unsigned char>(key[0]))) ::kill(child, std::stoi(key));
                    else if(::write(master, key.data(), key.size()) != ssize_t(key.size())) break;
                    continue;
                }
                const ssize_t size = ::read(master, buffer, sizeof(buffer));
                if(size <= 0) break;
                shown.append(buffer, std::size_t(size));
            }
            ::kill(child, SIGKILL);
            int status;
            ::waitpid(child, &status, 0);
            ::close(master);
            return toFiles ? outcome(status) : Outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -1, shown, {}};
        }

        std::string binary, source;
        TemporaryFolder folder;
        const std::string& dir = folder.path;
};

TEST_F(QuelmarProgramTest, DemoScriptGivesTheRecordedOutput) {
    const Outcome demo = run("scene.json --echo -s demo.quelmar");
    EXPECT_EQ(demo.status, 0);
    EXPECT_EQ(demo.err, "");

    const std::string golden = source + "/tests/golden/demo.txt";
    const std::string out = withStableKeys(demo.out);
    if(const char* const update = std::getenv("QUELMAR_UPDATE_GOLDEN"); update && std::string{update} == "1") writeText(golden, out);
    EXPECT_EQ(out, readText(golden)) << "QUELMAR_UPDATE_GOLDEN=1 rewrites the recorded output";

    /* What was saved opens again, as it was at the end of the demo */
    const Outcome reopened = run("scene.json -c tree");
    EXPECT_EQ(reopened.status, 0);
    std::string lastTree = out.substr(out.rfind("(root)"));
    /* Up to the blank line that ends the tree's part of the demo */
    lastTree = std::regex_replace(lastTree.substr(0, lastTree.find("\n\n") + 1), std::regex{" \\*\n"}, "\n");
    EXPECT_EQ(withStableKeys(reopened.out), lastTree);
}

/* Exit statuses, one-line errors, and what ends a run: the first failing
   command of -c, a script or a pipe, or the end of the commands, like quit */
TEST_F(QuelmarProgramTest, ExitStatusesAndEndsOfRuns) {
    writeText(path("broken.json"), "{\"objects\": [}");
    writeText(path("bom.json"), "\xef\xbb\xbf{\"objects\":{\"a\":{\"name\":\"A\"}}}");
    writeText(path("bom.quelmar"), "\xef\xbb\xbftree\n");
    writeText(path("script.quelmar"), "# comment\n\nadd A\nfrobnicate\nadd B\n");
    const std::string original = readText(path("scene.json"));
    /* The output is checked up to the length of the expected one */
    const struct { const char* arguments; std::string input; int status; const char* out; std::string err; } runs[]{
        {"--help", "", 0, "usage: quelmar [PROJECT.json] [-c", ""},
        {"--version", "", 0, "quelmar ", ""},
        {"--frobnicate", "", 2, "", "error: unknown option --frobnicate; see quelmar --help\n"},
        {"a.json b.json", "", 2, "", "error: give at most one project file; see quelmar --help\n"},
        {"-c", "", 2, "", "error: -c needs commands; see quelmar --help\n"},
        {"-c tree -s demo.quelmar", "", 2, "", "error: give either -c or -s, once; see quelmar --help\n"},
        {"--history-limit 1.5", "", 2, "", "error: --history-limit needs a whole number of megabytes; see quelmar --help\n"},
        /* No room for history: only the newest step stays, the saved one is gone */
        {"scene.json --history-limit 0 -c 'add A; save limited.json; add B; add C; history; quit!'", "", 0,
            "K0001\nsaved limited.json\nK0002\nK0003\n2 changes in 1 step: 1 to undo, 0 to redo; the saved state is no longer in the history\n", ""},
        /* A file that isn't there yet is a new project, written at the first save */
        {"missing.json -c 'tree; status'", "", 0, "(root)\nfile: missing.json\n", ""},
        {"broken.json -c tree", "", 1, "", "error: can't load broken.json: invalid JSON at line 1, column 14: Invalid value.\n"},
        {"-s missing.quelmar", "", 1, "", "error: can't read missing.quelmar: No such file or directory\n"},
        {"-s /dev/zero", "", 1, "", "error: can't read /dev/zero: it is a device, not a regular file\n"},
        /* A byte order mark before a project or a script says nothing */
        {"bom.json -s bom.quelmar", "", 0, "(root)\n└── a \"A\"\n", ""},
        /* No file: an empty project, which saves only with a path */
        {"-c 'tree; save'", "", 1, "(root)\n", "error: the project has no file yet; give one: save PATH\n"},
        {"-c 'add A; save new.json; status'", "", 0, "K0001\nsaved new.json\nfile: new.json\n", ""},
        {"scene.json -s script.quelmar", "", 1, "K0001\n", "error: script.quelmar:4: unknown command frobnicate; \"help\" lists the commands\n"},
        {"scene.json", "select hero\nselection\nselect nobody\nadd A\n", 1, "hero \"Hero\"\n", "error: stdin:3: there is no object nobody\n"},
        {"scene.json -s -", "tree\nfrob\x1b[A\n", 1, "(root)\n", "error: stdin:2: unknown command frob\\x1b[A; \"help\" lists the commands\n"},
        {"scene.json -s -", std::string{"tree\nselect hero\0x\n", 18}, 1, "(root)\n", "error: stdin:2: the input holds a NUL byte\n"},
        /* Semicolons inside quotes belong to the argument */
        {"scene.json -c 'set /objects/hero/name \"A;B\"; get /objects/hero/name; quit!'", "", 0, "\"A;B\"\n", ""},
        {"scene.json", "add Crate\n", 1, "K0001\n", "error: there are unsaved changes (1 step: add Crate); the journal .scene.json.journal keeps them for recover\n"},
        {"scene.json --no-journal", "add Crate\n", 1, "K0001\n", "error: there are unsaved changes (1 step: add Crate); they are lost\n"},
        {"scene.json -c 'set /skins/heroSkin/joints/0 \"x\"; check'", "", 1, "/skins/heroSkin/joints/0: there is no object x\n",
            "warning: /skins/heroSkin/joints/0: there is no object x\nerror: the project has 1 inconsistency\n"},
        /* Saved, undone and replaced by another change: the opened state is not the saved one */
        {"scene.json -c 'add A; save other.json; undo; add B; undo; quit'", "", 1, "K0001\nsaved other.json\n",
            "error: there are unsaved changes; save them, or use quit! to discard them\n"},
    };
    for(const auto& expected: runs) {
        SCOPED_TRACE(expected.arguments);
        const Outcome result = run(expected.arguments, expected.input);
        EXPECT_EQ(result.status, expected.status);
        EXPECT_EQ(withStableKeys(result.out).substr(0, std::strlen(expected.out)), expected.out);
        EXPECT_EQ(withStableKeys(result.err), expected.err);
        EXPECT_EQ(readText(path("scene.json")), original);
        /* Each run starts without the work an earlier one left */
        std::remove(path(".scene.json.journal").data());
    }
    EXPECT_NE(readText(path("new.json")).find("\"name\": \"A\""), std::string::npos);
}

/* Every command's output in sessions on the example scene */
TEST_F(QuelmarProgramTest, Commands) {
    const struct { const char* commands; const char* out; } sessions[]{
        {"add Crate; add Crate hero; add Crate; select hero; selection; delete spine; select sword camera; delete; tree; status",
            "K0001\nK0002\nK0003\nhero \"Hero\"\ndeleted 2 objects\ndeleted 2 objects\n"
            "(root)\n"
            "├── stage \"Stage\"\n"
            "│   ├── floor \"Floor\"\n"
            "│   ├── lamp \"Lamp\"\n"
            "│   └── hero \"Hero\"\n"
            "│       ├── hips \"Hips\"\n"
            "│       └── K0002 \"Crate.000\"\n"
            "├── K0001 \"Crate\"\n"
            "└── K0003 \"Crate.001\"\n"
            "file: scene.json\nobjects: 8 in the scene, 4 deleted\nselected: 0\n"
            "history: 5 steps to undo, 0 to redo (10 of 10 changes applied)\nunsaved changes\njournal: .scene.json.journal, 5 entries\n"},
        /* Plain reparenting keeps local transformations, one step for all */
        {"select head sword; reparent camera; get /objects/head/parent; get /objects/sword/transformation; undo; get /objects/head/parent",
            "Reparenting object head to camera\nReparenting object sword to camera\n\"camera\"\n"
            "[1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0.3, 0, 0.1, 1]\nundid 1 step (2 changes): reparent camera\n\"spine\"\n"},
        {"duplicate-resource materials stone; delete-resource materials steel; get /materials; undo 2; get /materials/steel/metallic",
            "K0001\n{\n"
            "  \"stone\": {\n    \"name\": \"Stone\",\n    \"color\": [0.5, 0.5, 0.45, 1]\n  },\n"
            "  \"cloth\": {\n    \"name\": \"Cloth\",\n    \"color\": [0.7, 0.2, 0.2, 1]\n  },\n"
            "  \"K0001\": {\n    \"name\": \"Stone\",\n    \"color\": [0.5, 0.5, 0.45, 1]\n  }\n}\n"
            "undid 2 steps (2 changes): delete-resource materials steel, duplicate-resource materials stone\n1\n"},
        /* A paste, of five objects, their skin and its two references, is one step */
        {"select hero; copy --trees hero.clip; select camera; paste --child; select head sword; duplicate; "
         "select floor; paste hero.clip; undo",
            "copied 5 objects and 1 skin\npasted 5 objects: K0001 K0002 K0003 K0004 K0005\n"
            "duplicated 2 objects: K0007 K0008\npasted 5 objects: K0009 K000a K000b K000c K000d\nundid 1 step (8 changes): paste\n"},
        /* A uniform scale by one number */
        {"show camera; scale hero 2 --by; move hero 0 0 -1 --world --by; get /objects/hero/transformation; delete sword; purge",
            "camera \"Camera\"\nlocal\n"
            "  translation  0 2 8\n"
            "  rotation     14.03624208 0 0  (degrees about the X, then the Y, then the Z axis of the parent)\n"
            "  quaternion   0.1221832517 0 0 0.9925075582  (x y z w)\n"
            "  scale        1 0.9999999938 0.9999999938\n"
            "world\n"
            "  translation  0 2 8\n"
            "  rotation     14.03624208 0 0  (degrees about the X, then the Y, then the Z axis of the world)\n"
            "  quaternion   0.1221832517 0 0 0.9925075582  (x y z w)\n"
            "  scale        1 0.9999999938 0.9999999938\n"
            "[0, 0, -2, 0, 0, 2, 0, 0, 2, 0, 0, 0, 0, 0, 2, 1]\ndeleted 1 object\npurged 1 object\n"},
        {"set /objects/hero/name \"Knight\"; save knight.json; add Crate; remove /objects/camera; undo; history --changes; "
         "redo; undo 2; redo 2",
            "saved knight.json\nK0001\nundid 1 step (1 change): remove /objects/camera\n4 changes in 3 steps: 2 to undo, 1 to redo\n"
            "   1 [1] Change /objects/hero/name: \"Hero\" -> \"Knight\"\n"
            "      --- saved ---\n"
            "   2 [2] Create /objects/K0001: () -> {}\n"
            "   3 [2] Create /objects/K0001/name: () -> \"Crate\"\n"
            "      --- now ---\n"
            "   4 [3] Remove /objects/camera: {\"name\":\"Camera\",\"transformation\":[1,0,0,0,0,0.9701425,0.2425356,0,0,-0.2425356,0.9701425,0,0,2,8,1],\"components\":[{\"type\":\"camera\",\"camera\":{\"fov\":60}}]} -> () (undone)\n"
            "redid 1 step (1 change): remove /objects/camera\nundid 2 steps (3 changes): remove /objects/camera, add Crate\n"
            "redid 2 steps (3 changes): add Crate, remove /objects/camera\n"},
        /* Names where keys go, $_, patterns, rename and the steps by name */
        {"add Crate Hero; add Crate $_; add Lid Crate.000; find Crate*; select Crate* Lid; select -$_ +Sw?rd +F*; selection; "
         "rename Crate.000 Lamp; tree hero --depth 2; history",
            "K0001\nK0002\nK0003\nK0001 \"Crate\" /Stage/Hero/Crate\nK0002 \"Crate.000\" /Stage/Hero/Crate/Crate.000\n"
            "floor \"Floor\"\nsword \"Sword\"\nK0001 \"Crate\"\nK0002 \"Crate.000\"\n"
            "renamed K0002 to \"Lamp.000\"\n"
            "hero \"Hero\"\n├── hips \"Hips\"\n│   ├── spine \"Spine\" (1 more below)\n│   └── sword \"Sword\" *\n└── K0001 \"Crate\" *\n    └── K0002 \"Lamp.000\" * (1 more below)\n"
            "10 changes in 4 steps: 4 to undo, 0 to redo\n      --- saved ---\n   1 add Crate hero (3 changes)\n   2 add Crate K0001 (3 changes)\n"
            "   3 add Lid K0002 (3 changes)\n   4 rename K0002 Lamp.000 (1 change)\n      --- now ---\n"},
    };
    for(const auto& session: sessions) {
        SCOPED_TRACE(session.commands);
        const Outcome result = run("scene.json -c '" + std::string{session.commands} + "; quit!'");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(withStableKeys(result.out), session.out);
    }

    /* The clipboard file holds one record a line; the paste of it above read it back */
    EXPECT_EQ(readText(path("hero.clip")).find("{\"objects\":{\n\"hero\": {"), 0u);
}

/* Every --json output is one JSON document on one line, and holds what the
   output for a person shows: the pieces that each row makes of the
   document appear in that output, in order */
TEST_F(QuelmarProgramTest, JsonOutputsHoldWhatPeopleSee) {
    typedef std::vector<std::string> Pieces;
    const auto count = [](const rapidjson::Value& n, const char* what) {
        return std::to_string(n.GetUint64()) + " " + what + (n.GetUint64() == 1 ? "" : "s");
    };
    const auto text = [](const rapidjson::Value& string) { return std::string{string.GetString(), string.GetStringLength()}; };
    const auto name = [&](const rapidjson::Value& name) { return name.IsNull() ? "(no name)" : QuelmarEngine::writeJson(name); };
    const auto keys = [&](const rapidjson::Value& json) {
        Pieces pieces;
        for(const auto& key: json["keys"].GetArray()) if(pieces.size() < 8) pieces.push_back(" " + text(key));
        return pieces;
    };
    const auto steps = [&](const rapidjson::Value& json) {
        Pieces pieces{"(" + count(json["changes"], "change") + "): "};
        for(const auto& step: json["steps"].GetArray()) pieces.push_back(text(step["label"]));
        return pieces;
    };
    const auto objects = [&](const rapidjson::Value& json) {
        Pieces pieces;
        for(const auto& object: json[json.HasMember("objects") ? "objects" : "selected"].GetArray()) {
            std::string piece = text(object["key"]) + " " + name(object["name"]);
            if(object.HasMember("path")) piece += " ";
            if(object.HasMember("path")) for(const auto& step: object["path"].GetArray()) piece += "/" + text(step);
            if(object.HasMember("selected") && object["selected"].GetBool()) piece += " *";
            if(object.HasMember("hidden") && object["hidden"].GetUint64()) piece += " (" + std::to_string(object["hidden"].GetUint64()) + " more below)";
            pieces.push_back(piece + "\n");
        }
        return pieces;
    };
    const struct { const char* command; std::function<Pieces(const rapidjson::Value&)> pieces; } rows[]{
        {"tree", objects},
        {"tree Stage --depth 1", objects},
        {"selection", objects},
        {"find *r*", objects},
        {"status", [&](const rapidjson::Value& json) {
            return Pieces{"file: " + text(json["file"]), "objects: " + std::to_string(json["objects"].GetUint64()) + " in the scene, " +
                std::to_string(json["deleted"].GetUint64()) + " deleted", "selected: " + std::to_string(json["selected"].GetUint64()),
                "history: " + std::to_string(json["undo"].GetUint64()), std::to_string(json["redo"].GetUint64()) + " to redo (" +
                std::to_string(json["appliedChanges"].GetUint64()) + " of " + std::to_string(json["changes"].GetUint64()),
                json["saved"].GetBool() ? "saved" : "unsaved changes"};
        }},
        {"history", [&](const rapidjson::Value& json) {
            Pieces pieces;
            for(const auto& step: json["steps"].GetArray())
                pieces.push_back(" " + std::to_string(step["number"].GetUint64()) + " " + text(step["label"]) + " (" + count(step["changes"], "change") + ")" +
                    (step["undone"].GetBool() ? " (undone)\n" : "\n"));
            return pieces;
        }},
        {"history --changes", [&](const rapidjson::Value& json) {
            Pieces pieces;
            for(const auto& change: json["changes"].GetArray())
                pieces.push_back(" [" + std::to_string(change["step"].GetUint64()) + "] " + text(change["text"]) + (change["undone"].GetBool() ? " (undone)\n" : "\n"));
            return pieces;
        }},
        {"add Lid Crate", [&](const rapidjson::Value& json) { return Pieces{text(json["key"]) + "\n"}; }},
        {"paste", keys},
        {"duplicate --trees", keys},
        {"undo 2", steps},
        {"redo", steps},
    };
    const std::string setup = "select hero; duplicate --trees; select sword; copy; add Crate stage; delete lamp; "
        "set /materials/x 1; undo; select hero Crate; ";
    for(const auto& row: rows) {
        SCOPED_TRACE(row.command);
        const Outcome person = run("scene.json -c '" + setup + row.command + "; quit!'");
        const Outcome program = run("scene.json -c '" + setup + row.command + " --json; quit!'");
        ASSERT_EQ(program.status, 0) << program.err;
        /* Both ran the same setup, which printed the same, bar the keys */
        const std::string before = withStableKeys(program.out.substr(0, program.out.rfind('\n', program.out.size() - 2) + 1));
        const std::string shown = withStableKeys(person.out).substr(before.size());
        const std::string json = withStableKeys(program.out).substr(before.size());
        ASSERT_EQ(json.find('\n'), json.size() - 1);

        rapidjson::Document document;
        QuelmarEngine::JsonParseError error;
        ASSERT_TRUE(QuelmarEngine::parseJson(document, {json.data(), json.size()}, error)) << json;
        std::size_t at = 0;
        for(const std::string& piece: row.pieces(document)) {
            at = shown.find(piece, at);
            ASSERT_NE(at, std::string::npos) << "no " << piece << " in order in\n" << shown << json;
            at += piece.size();
        }
    }
}

/* A refused command prints one error line and changes nothing, not even the
   selection: at a terminal the commands go on, and end as before the first.
   What the session refuses, and why, its own tests go through. */
TEST_F(QuelmarProgramTest, RefusalsChangeNothing) {
    writeText(path("deep.clip"), std::string(300, '[') + std::string(300, ']'));
    const struct { const char* command; const char* error; } refusals[]{
        {"frobnicate", "unknown command frobnicate; \"help\" lists the commands"},
        {"tree --all", "tree has no option --all; usage: tree [OBJECT] [--depth N] [--json]"},
        {"tree --depth=x", "--depth has to be a number, not x"},
        {"add", "missing argument; usage: add NAME [PARENT] [--json]"},
        {"add A B C", "too many arguments; usage: add NAME [PARENT] [--json]"},
        {"add A $_", "$_ names no object yet: no command has added one"},
        {"add \"unclosed", "unterminated double quote at column 5"},
        {"delete", "nothing is selected"},
        {"paste", "the clipboard is empty; copy something first"},
        {"paste missing.clip", "can't read missing.clip: No such file or directory"},
        {"paste deep.clip", "deep.clip is not valid JSON at line 1, column 257: nested deeper than 256 levels"},
        {"undo 99999999999999999999", "the count has to be a positive number, not 99999999999999999999"},
        {"select hero", nullptr},
        {"reparent hips", "can't move the selected objects under hips, which is selected or lies below a selected object"},
        {"move hero 1 x 3", "not a finite number: x"},
        {"scale hero 1 2", "give one number or three after the object"},
        {"purge spine", "references to purged objects would remain: /skins/heroSkin/joints/1 (spine), "
            "/skins/heroSkin/joints/2 (head); --force removes all the same"},
        /* The project file under another name, and another file without --force */
        {"copy ./scene.json --force", "can't write ./scene.json: it is the open project file"},
        {"copy demo.quelmar", "can't write demo.quelmar: it exists; --force replaces it"},
    };
    std::string input = "delete spine\nset /objects/camera/name \"Eye\"\n", expectedErrors;
    for(const auto& refusal: refusals) {
        input += refusal.command + std::string{"\n"};
        if(refusal.error) expectedErrors += "error: " + std::string{refusal.error} + "\n";
    }
    /* The two changes and the selected hero */
    input += "history\nselection\nquit\nundo 2\nquit\n";

    const Outcome session = runAtTerminal({input}, {}, true);
    EXPECT_EQ(session.status, 0);
    ASSERT_EQ(session.err.substr(0, expectedErrors.size()), expectedErrors);
    EXPECT_EQ(session.err.substr(expectedErrors.size()), "error: there are unsaved changes (2 steps: delete spine, "
        "set /objects/camera/name \"Eye\"); save them, or use quit! to discard them\n");
    /* One prompt per line read, and one before the end of input */
    const std::regex prompt{"quelmar> "};
    EXPECT_EQ(std::distance(std::sregex_iterator{session.out.begin(), session.out.end(), prompt}, {}), std::count(input.begin(), input.end(), '\n'));
    EXPECT_NE(session.out.find("2 changes in 2 steps: 2 to undo, 0 to redo\n"), std::string::npos);
    EXPECT_NE(session.out.find("quelmar> hero \"Hero\"\n"), std::string::npos);
    EXPECT_EQ(readText(path("demo.quelmar")).find("# A tour"), 0u);
}

/* A person at a terminal: the arrow keys recall commands of this session
   and the ones before, Tab completes, Control-C drops the line being typed,
   Control-D and SIGTERM end the session only with nothing unsaved, and
   diagnostics take colour unless NO_COLOR is set. The rows share the
   history file, in order */
TEST_F(QuelmarProgramTest, TerminalSessions) {
    const std::string red = "\x1b[1;31merror:\x1b[0m ", refusal = "there are unsaved changes (1 step: add Crate); save them, or use quit! to discard them";
    const struct { std::vector<std::string> keys; std::vector<std::string> env; int status; std::vector<std::string> shown, notShown; } sessions[]{
        {{"add Crate\r", "\x1b[A\r", "quit!\r"}, {}, 0, {"K0001\r\n", "K0002\r\n"}, {}},
        /* The earlier session's last command is the latest but one */
        {{"\x1b[A\x1b[A\r", "quit!\r"}, {}, 0, {"K0001\r\n"}, {}},
        {{"tr\t--d\t1\r", "show ca\t\r", "get /objects/ca\tna\t\r", "quit\r"}, {}, 0,
            {"stage \"Stage\" (7 more below)", "camera \"Camera\"\r\nlocal", "\r\n\"Camera\"\r\n"}, {"error"}},
        {{"frobnicate\x03", "status\r", "quit\r"}, {}, 0, {"\r\nsaved\r\n"}, {"frobnicate;"}},
        {{"add Crate\r", "\x04", "quit!\r"}, {}, 0, {red + refusal}, {}},
        {{"add Crate\r", std::to_string(SIGTERM), "quit!\r"}, {}, 0, {red + "SIGTERM: " + refusal}, {}},
        {{"status\r", std::to_string(SIGTERM)}, {}, 0, {"saved"}, {"error"}},
        {{"select hero\r", "tree hero --depth 1\r", "quit\r"}, {"NO_COLOR="}, 0, {"hero \"Hero\" \x1b[1;32m*\x1b[0m", "\x1b[2m└── \x1b[0mhips"}, {}},
        {{"frobnicate\r", "select hero\r", "tree\r", "quit\r"}, {"NO_COLOR=1"}, 0, {"error: unknown command frobnicate", "\"Hero\" *"}, {"\x1b[1;3", "\x1b[2m"}},
    };
    for(const auto& session: sessions) {
        SCOPED_TRACE(session.keys[0]);
        const Outcome result = runAtTerminal(session.keys, session.env);
        const std::string shown = withStableKeys(result.out);
        EXPECT_EQ(result.status, session.status) << shown;
        for(const std::string& piece: session.shown) EXPECT_NE(shown.find(piece), std::string::npos) << piece << " not in\n" << shown;
        for(const std::string& piece: session.notShown) EXPECT_EQ(shown.find(piece), std::string::npos) << piece << " in\n" << shown;
    }

    /* Commands from a pipe are a script, which SIGTERM ends once the command under way is done */
    const Outcome script = outcome(std::system(("cd " + shellQuoted(dir) + " && rm -f .stdout .pid && { echo 'add Crate'; i=0; while [ ! -s .stdout ] && [ $i -lt 1200 ]; do sleep 0.05; i=$((i+1)); done; "
        "kill -TERM $(cat .pid); } | sh -c 'echo $$ >.pid; exec \"$0\" scene.json' " + shellQuoted(binary) + " >.stdout 2>.stderr").data()));
    EXPECT_EQ(script.status, 128 + SIGTERM);
    EXPECT_EQ(script.err, "error: stopped by SIGTERM; there are unsaved changes (1 step: add Crate); the journal .scene.json.journal keeps them for recover\n");
    /* Which the next session is offered */
    const Outcome recovered = run("scene.json -c 'recover; status; quit!'");
    EXPECT_EQ(recovered.err, "warning: the journal .scene.json.journal holds 1 entry of unsaved work from a session that ended without saving; "
        "the project is read-only until it is recovered or discarded\nwarning: recover replays the journal, discard-journal drops it\n");
    EXPECT_EQ(recovered.out, "replayed 1 entry: 1 step to undo, 0 to redo\nfile: scene.json\n"
        "objects: 10 in the scene\nselected: 0\nhistory: 1 step to undo, 0 to redo (2 of 2 changes applied)\nunsaved changes\njournal: .scene.json.journal, 1 entry\n");
}

/* A save keeps the file's layout: an edit of one line changes that line,
   and a world-keeping move away and back changes nothing */
TEST_F(QuelmarProgramTest, SavesDiffOnlyWhereTheyChanged) {
    const struct { const char* commands; const char* diff; } edits[]{
        {"set /objects/hero/name \"Knight\"", "20c20\n<       \"name\": \"Hero\",\n---\n>       \"name\": \"Knight\",\n"},
        {"select lamp sword; reparent camera --keep-transform; reparent stage --keep-transform; select sword; reparent hips --keep-transform", ""},
    };
    for(const auto& edit: edits) {
        SCOPED_TRACE(edit.commands);
        const Outcome saved = run("scene.json -c '" + std::string{edit.commands} + "; save'");
        ASSERT_EQ(saved.status, 0) << saved.err;
        EXPECT_EQ(std::system(("diff " + shellQuoted(source + "/examples/scene.json") + " " + shellQuoted(path("scene.json")) + " >" +
            shellQuoted(path(".diff"))).data()) == 0, !*edit.diff);
        EXPECT_EQ(readText(path(".diff")), edit.diff);
        ASSERT_EQ(std::system(("cp " + shellQuoted(source + "/examples/scene.json") + " " + shellQuoted(dir)).data()), 0);
    }
}

/* A save that dies before its rename leaves the old file byte for byte and
   no temporary file. The kernel signals the program once it writes past a
   file size limit, which it reaches while writing the temporary file; with
   the signal ignored the write fails instead and the save reports it */
TEST_F(QuelmarProgramTest, InterruptedSaveKeepsTheOldFile) {
    const std::string original = readText(path("scene.json"));
    /* Without a journal, whose entry would reach the limit first */
    const std::string commands = "--no-journal -c 'set /padding \"" + std::string(20000, 'x') + "\"; save'";

    /* Killed by the signal, which the shell reports itself, then failing with it ignored */
    for(const auto& [shell, status, err]: {std::tuple{"ulimit -f 16;", 128 + SIGXFSZ, ""},
                                           std::tuple{"trap '' XFSZ; ulimit -f 16;", 1, "error: can't save scene.json: File too large\n"}}) {
        SCOPED_TRACE(shell);
        const Outcome result = run("scene.json " + commands, {}, shell);
        EXPECT_EQ(result.status, status);
        EXPECT_TRUE(!*err || result.err == err) << result.err;
        EXPECT_EQ(readText(path("scene.json")), original);
        EXPECT_NE(std::system(("ls " + shellQuoted(dir) + "/scene.json.?????? >/dev/null 2>&1").data()), 0);
    }
}

}
