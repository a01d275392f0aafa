/* End-to-end tests of the quelmar program: the built binary run on
   temporary copies of real project files. */
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <gtest/gtest.h>

namespace {

std::string environment(const char* const name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

std::string readText(const std::string& path) {
    std::ifstream file{path, std::ios::binary};
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void writeText(const std::string& path, const std::string& text) {
    std::ofstream{path, std::ios::binary} << text;
}

std::string shellQuoted(const std::string& text) {
    std::string out = "'";
    for(const char c: text) out += c == '\'' ? std::string{"'\\''"} : std::string(1, c);
    return out + "'";
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in{text};
    for(std::string line; std::getline(in, line); ) out.push_back(line);
    return out;
}

/* Keys made by the program change from run to run: a per-run prefix and a
   counter. Keeping the counter and dropping the prefix makes output
   comparable. */
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
            binary = environment("QUELMAR_BINARY");
            source = environment("QUELMAR_SOURCE_DIR");
            ASSERT_FALSE(binary.empty()) << "QUELMAR_BINARY names no program; run the test through ctest";
            ASSERT_FALSE(source.empty()) << "QUELMAR_SOURCE_DIR is not set; run the test through ctest";
            char pattern[] = "/tmp/quelmar-test-XXXXXX";
            ASSERT_TRUE(::mkdtemp(pattern));
            dir = pattern;
            ASSERT_EQ(std::system(("cp " + shellQuoted(source + "/examples") + "/* " + shellQuoted(dir)).data()), 0);
        }

        void TearDown() override {
            if(!dir.empty()) std::system(("rm -rf " + shellQuoted(dir)).data());
        }

        std::string path(const std::string& name) const { return dir + "/" + name; }

        /* Runs the program in the folder with @p input on a pipe; @p shell
           comes first in the same shell, for limits and signal dispositions */
        Outcome run(const std::string& arguments, const std::string& input = {}, const std::string& shell = {}) const {
            writeText(path(".stdin"), input);
            const std::string command = "cd " + shellQuoted(dir) + " && " + shell + " " + shellQuoted(binary) + " " + arguments +
                " <.stdin >.stdout 2>.stderr";
            const int status = std::system(command.data());
            return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readText(path(".stdout")), readText(path(".stderr"))};
        }

        /* Runs the program with a terminal as its standard input */
        Outcome runInTerminal(const std::string& arguments, const std::string& input) const {
            const int master = ::posix_openpt(O_RDWR|O_NOCTTY);
            if(master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0) return {-1, {}, "no terminal"};
            const std::string terminal = ::ptsname(master);
            const std::string command = "exec " + shellQuoted(binary) + " " + arguments + " >.stdout 2>.stderr";
            const pid_t child = ::fork();
            if(child == 0) {
                ::setsid();
                const int slave = ::open(terminal.data(), O_RDWR);
                if(slave < 0 || ::dup2(slave, 0) < 0 || ::chdir(dir.data()) != 0) ::_exit(127);
                ::close(master);
                ::execl("/bin/sh", "sh", "-c", command.data(), static_cast<char*>(nullptr));
                ::_exit(127);
            }
            /* Control-D at the start of a line is the end of input */
            const std::string text = input + "\x04";
            if(::write(master, text.data(), text.size()) != ssize_t(text.size())) return {-1, {}, "can't write to the terminal"};
            /* Take the echo away until the program is gone */
            char buffer[4096];
            while(::read(master, buffer, sizeof(buffer)) > 0) {}
            int status;
            ::waitpid(child, &status, 0);
            ::close(master);
            return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readText(path(".stdout")), readText(path(".stderr"))};
        }

        std::string binary, source, dir;
};

TEST_F(QuelmarProgramTest, DemoScriptGivesTheRecordedOutput) {
    const Outcome demo = run("scene.json -s demo.quelmar");
    EXPECT_EQ(demo.status, 0);
    EXPECT_EQ(demo.err, "");

    const std::string golden = source + "/tests/golden/demo.txt";
    const std::string out = withStableKeys(demo.out);
    if(environment("QUELMAR_UPDATE_GOLDEN") == "1") writeText(golden, out);
    EXPECT_EQ(out, readText(golden)) << "QUELMAR_UPDATE_GOLDEN=1 rewrites the recorded output";

    /* What was saved opens again, as it was at the end of the demo */
    const Outcome reopened = run("scene.json -c tree");
    EXPECT_EQ(reopened.status, 0);
    std::string lastTree = out.substr(out.rfind("(root)"));
    lastTree = std::regex_replace(lastTree.substr(0, lastTree.find("undid")), std::regex{" \\*\n"}, "\n");
    EXPECT_EQ(withStableKeys(reopened.out), lastTree);
}

TEST_F(QuelmarProgramTest, Invocation) {
    const Outcome help = run("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.find("usage: quelmar"), 0u);

    const Outcome version = run("--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out.find("quelmar "), 0u);

    for(const char* usage: {"--frobnicate", "a.json b.json", "-c", "-s", "-c tree -s demo.quelmar"}) {
        SCOPED_TRACE(usage);
        const Outcome wrong = run(usage);
        EXPECT_EQ(wrong.status, 2);
        EXPECT_EQ(lines(wrong.err).size(), 1u);
        EXPECT_EQ(wrong.err.find("error: "), 0u);
    }

    /* Project files that can't be opened */
    writeText(path("broken.json"), "{\"objects\": [}");
    writeText(path("slash.json"), "{\"objects\": {\"a/b\": {}}}");
    for(const char* file: {"missing.json", "broken.json", "slash.json", "."}) {
        SCOPED_TRACE(file);
        const Outcome refused = run(std::string{file} + " -c tree");
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.out, "");
        EXPECT_EQ(lines(refused.err).size(), 1u);
        EXPECT_EQ(refused.err.find("error: Can't load"), 0u);
    }

    /* No file: an empty project, saved only with a path */
    const Outcome empty = run("-c 'tree; save'");
    EXPECT_EQ(empty.status, 1);
    EXPECT_EQ(empty.out, "(root)\n");
    EXPECT_EQ(empty.err, "error: the project has no file yet; give one: save PATH\n");
    EXPECT_EQ(run("-c 'add A; save new.json; status'").status, 0);
    EXPECT_NE(readText(path("new.json")).find("\"name\": \"A\""), std::string::npos);

    /* A script stops at its first failing command and names its line */
    writeText(path("script.quelmar"), "# comment\n\nadd A\nfrobnicate\nadd B\n");
    const Outcome script = run("scene.json -s script.quelmar");
    EXPECT_EQ(script.status, 1);
    EXPECT_EQ(lines(script.out).size(), 1u);
    EXPECT_EQ(script.err, "error: script.quelmar:4: unknown command frobnicate; \"help\" lists the commands\n");
    EXPECT_EQ(run("-s missing.quelmar").status, 1);

    /* Commands on a pipe: no prompt, and they stop at a failure too */
    const Outcome piped = run("scene.json", "select hero\nselection\nselect nobody\nselection\n");
    EXPECT_EQ(piped.status, 1);
    EXPECT_EQ(piped.out, "hero \"Hero\"\n");
    EXPECT_EQ(piped.err, "error: there is no object nobody\n");

    /* Semicolons inside quotes belong to the argument */
    const Outcome quotedSemicolon = run("scene.json -c 'set /objects/hero/name \"A;B\"; get /objects/hero/name; quit!'");
    EXPECT_EQ(quotedSemicolon.status, 0);
    EXPECT_EQ(quotedSemicolon.out, "\"A;B\"\n");
}

TEST_F(QuelmarProgramTest, QuitWithUnsavedChanges) {
    const std::string original = readText(path("scene.json"));

    const Outcome refused = run("scene.json -c 'add Crate; quit'");
    EXPECT_EQ(refused.status, 1);
    const std::string key = lines(refused.out).at(0);
    EXPECT_EQ(refused.err, "error: there are unsaved changes to /objects/" + key + ", /objects/" + key +
        "/name; save them, or use quit! to discard them\n");

    const Outcome forced = run("scene.json -c 'add Crate; quit!'");
    EXPECT_EQ(forced.status, 0);
    EXPECT_EQ(forced.err, "");

    /* The end of input is a quit */
    const Outcome ended = run("scene.json", "add Crate\n");
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.err.find("there are unsaved changes"), std::string::npos);
    EXPECT_EQ(run("scene.json -c 'add Crate; undo'").status, 0);
    EXPECT_EQ(readText(path("scene.json")), original);

    /* Saved, undone and replaced by another change: going back to the
       opened state is not the saved state any more */
    const Outcome replaced = run("scene.json -c 'add A; save; undo; add B; undo; status; quit'");
    EXPECT_EQ(replaced.status, 1);
    EXPECT_NE(replaced.out.find("unsaved changes\n"), std::string::npos);
    EXPECT_EQ(replaced.err.find("error: there are unsaved changes"), 0u);
}

TEST_F(QuelmarProgramTest, EditingObjects) {
    const Outcome added = run("scene.json -c 'add Crate; add Crate hero; add Crate; select hero; selection; "
        "delete spine; select sword camera; delete; tree; status; quit!'");
    ASSERT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(added.err, "");
    const std::vector<std::string> out = lines(withStableKeys(added.out));
    ASSERT_GE(out.size(), 3u);
    EXPECT_EQ(out[0], "K0001");
    EXPECT_EQ(out[1], "K0002");
    EXPECT_EQ(withStableKeys(added.out).substr(18),
        "hero \"Hero\"\n"
        "deleted 2 objects\n"
        "deleted 2 objects\n"
        "(root)\n"
        "├── stage \"Stage\"\n"
        "│   ├── floor \"Floor\"\n"
        "│   ├── lamp \"Lamp\"\n"
        "│   └── hero \"Hero\"\n"
        "│       ├── hips \"Hips\"\n"
        "│       └── K0002 \"Crate.000\"\n"
        "├── K0001 \"Crate\"\n"
        "└── K0003 \"Crate.001\"\n"
        "file: scene.json\n"
        "objects: 8 in the scene, 4 deleted\n"
        "selected: 0\n"
        "history: 5 steps to undo, 0 to redo (10 of 10 changes applied)\n"
        "unsaved changes\n");

    /* Plain reparenting keeps local transformations; each selected object
       moves, and the library says so for each */
    const Outcome plain = run("scene.json -c 'select head sword; reparent camera; get /objects/head/parent; "
        "get /objects/sword/transformation; undo; get /objects/head/parent; quit!'");
    EXPECT_EQ(plain.status, 0);
    EXPECT_EQ(plain.out,
        "Reparenting object head to camera\n"
        "Reparenting object sword to camera\n"
        "\"camera\"\n"
        "[1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0.3, 0, 0.1, 1]\n"
        "undid 1 step (2 changes)\n"
        "\"spine\"\n");

    /* Keeping the world placement: the lamp at (2, 4, -1) under the stage
       moves under the floor at (0, -0.5, 0) scaled by 10, 1, 10 */
    const Outcome kept = run("scene.json -c 'select lamp floor; reparent root --keep-transform; select lamp; "
        "reparent floor --keep-transform; get /objects/lamp/transformation; quit!'");
    EXPECT_EQ(kept.status, 0);
    EXPECT_EQ(kept.out,
        "Reparenting object floor to root\n"
        "Reparenting object lamp to root\n"
        "Reparenting object lamp to floor\n"
        "[0.10000000149011612, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 0.10000000149011612, 0.0, 0.20000000298023224, 4.5, -0.10000000149011612, 1.0]\n");

    /* Resources by type and key */
    const Outcome resources = run("scene.json -c 'duplicate-resource materials stone; delete-resource materials steel; "
        "get /materials; undo 2; get /materials/steel/metallic; quit!'");
    EXPECT_EQ(resources.status, 0);
    EXPECT_EQ(withStableKeys(resources.out),
        "K0001\n{\n"
        "  \"stone\": {\n    \"name\": \"Stone\",\n    \"color\": [0.5, 0.5, 0.45, 1]\n  },\n"
        "  \"cloth\": {\n    \"name\": \"Cloth\",\n    \"color\": [0.7, 0.2, 0.2, 1]\n  },\n"
        "  \"K0001\": {\n    \"name\": \"Stone\",\n    \"color\": [0.5, 0.5, 0.45, 1]\n  }\n}\n"
        "undid 2 steps (2 changes)\n"
        "1\n");
}

TEST_F(QuelmarProgramTest, ClipboardAndDuplicates) {
    /* The clipboard file holds one record a line; pasting it as a child
       gives new keys and rewires the skin and its joints */
    const Outcome copied = run("scene.json -c 'select hero; copy --trees hero.clip; select camera; paste --child; "
        "get /skins; tree; quit!'");
    ASSERT_EQ(copied.status, 0) << copied.err;
    EXPECT_EQ(copied.err, "");
    const std::string clip = readText(path("hero.clip"));
    EXPECT_EQ(clip.find("{\"objects\":{\n\"hero\": {"), 0u);
    EXPECT_NE(clip.find("\n}\n,\"skins\":{\n\"heroSkin\": {\"joints\":[\"hips\",\"spine\",\"head\"]}\n}\n}"), std::string::npos);
    const std::string out = withStableKeys(copied.out);
    EXPECT_EQ(out.substr(0, out.find("{")),
        "copied 5 objects and 1 skin\n"
        "pasted 5 objects: K0001 K0002 K0003 K0004 K0005\n");
    EXPECT_NE(out.find("\"K0006\": {\n    \"joints\": [\"K0002\", \"K0003\", \"K0004\"]\n  }"), std::string::npos);
    EXPECT_NE(out.find("└── camera \"Camera\"\n"
                       "    └── K0001 \"Hero\" *\n"
                       "        └── K0002 \"Hips\" *\n"
                       "            ├── K0003 \"Spine\" *\n"
                       "            │   └── K0004 \"Head\" *\n"
                       "            └── K0005 \"Sword\" *\n"), std::string::npos);

    /* A file from another session pastes beside the selection; one undo
       takes a whole paste back */
    const Outcome pasted = run("scene.json -c 'select floor; paste hero.clip; undo; status; quit!'");
    EXPECT_EQ(pasted.status, 0);
    EXPECT_NE(pasted.out.find("undid 1 step (8 changes)\n"), std::string::npos);

    /* Duplicating without the trees copies only the selected objects, all
       beside the one with the lowest index */
    const Outcome duplicated = run("scene.json -c 'select head sword; duplicate; tree; quit!'");
    EXPECT_EQ(duplicated.status, 0);
    EXPECT_NE(withStableKeys(duplicated.out).find("duplicated 2 objects: K0001 K0002\n"), std::string::npos);
    EXPECT_NE(withStableKeys(duplicated.out).find("│           │   ├── K0001 \"Head\" *\n"
                                                  "│           │   └── K0002 \"Sword\" *\n"
                                                  "│           └── sword \"Sword\"\n"), std::string::npos);
}

TEST_F(QuelmarProgramTest, HistoryUndoRedo) {
    const Outcome history = run("scene.json -c 'set /objects/hero/name \"Knight\"; save; add Crate; remove /objects/camera; "
        "undo; history; redo; undo 2; redo 2; status; quit!'");
    ASSERT_EQ(history.status, 0) << history.err;
    EXPECT_EQ(withStableKeys(history.out),
        "saved scene.json\n"
        "K0001\n"
        "undid 1 step (1 change)\n"
        "4 changes in 3 steps: 2 to undo, 1 to redo\n"
        "   1 [1] Change /objects/hero/name: \"Hero\" -> \"Knight\"\n"
        "      --- saved ---\n"
        "   2 [2] Create /objects/K0001: () -> {}\n"
        "   3 [2] Create /objects/K0001/name: () -> \"Crate\"\n"
        "      --- now ---\n"
        "   4 [3] Remove /objects/camera: {\"name\":\"Camera\",\"transformation\":[1,0,0,0,0,0.9701425,0.2425356,0,0,-0.2425356,0.9701425,0,0,2,8,1],\"components\":[{\"type\":\"camera\",\"camera\":{\"fov\":60}}]} -> () (undone)\n"
        "redid 1 step (1 change)\n"
        "undid 2 steps (3 changes)\n"
        "redid 2 steps (3 changes)\n"
        "file: scene.json\n"
        "objects: 9 in the scene\n"
        "selected: 0\n"
        "history: 3 steps to undo, 0 to redo (4 of 4 changes applied)\n"
        "unsaved changes\n");
}

/* A refused command changes nothing: in a terminal session the commands
   go on after each refusal, and the state at the end is as at the start */
TEST_F(QuelmarProgramTest, RefusalsChangeNothing) {
    writeText(path("array.clip"), "[1, 2]");
    writeText(path("deep.clip"), std::string(300, '[') + std::string(300, ']'));
    const struct {
        const char* command;
        const char* error;
    } refusals[]{
        {"frobnicate", "unknown command frobnicate; \"help\" lists the commands"},
        {"tree --all", "tree has no option --all; usage: tree"},
        {"add", "missing argument; usage: add NAME [PARENT]"},
        {"add A B C", "too many arguments; usage: add NAME [PARENT]"},
        {"add \"unclosed", "unterminated double quote at column 5"},
        {"add A nobody", "there is no object nobody"},
        {"add A head", "object head is not in the scene: it or an ancestor is deleted"},
        {"add ''", "an object's name can't be empty"},
        {"select hero nobody", "there is no object nobody"},
        {"delete nobody", "there is no object nobody"},
        {"delete", "nothing is selected"},
        {"reparent hero", "nothing is selected"},
        {"get /objects/nobody", "there is no value at /objects/nobody"},
        {"get objects", "invalid JSON Pointer objects at byte 0: it has to be empty or start with /, and ~ has to be followed by 0 or 1"},
        {"set \"\" {}", "set can't replace the whole document; set its members instead"},
        {"set /a~2 1", "invalid JSON Pointer /a~2 at byte 3: it has to be empty or start with /, and ~ has to be followed by 0 or 1"},
        {"set /objects/hero/transformation/100000000 1", "index 100000000 is past the end of the array at /objects/hero/transformation, which has 16 elements"},
        {"set /objects/hero/transformation/x 1", "/objects/hero/transformation is an array: the last token has to be an index or -"},
        {"set /objects/hero/name/x 1", "/objects/hero/name is a string, which has no members"},
        {"set /objects/nobody/name 1", "there is no value at /objects/nobody to set a member of"},
        {"set /objects/a~1b {}", "a key can't be empty or hold / ~ \" \\ or a control character"},
        {"set /objects/x 1", "a record of objects has to be a JSON object"},
        {"set /skins []", "skins has to be a JSON object"},
        {"set /objects/hero/name", "missing argument; usage: set POINTER JSON"},
        {"set /objects/hero/name Knight", "invalid JSON at byte 0: Invalid value."},
        {"remove \"\"", "remove can't remove the whole document"},
        {"remove /objects/nobody", "there is no value at /objects/nobody"},
        {"paste", "the clipboard is empty; copy something first"},
        {"paste missing.clip", "can't read missing.clip: No such file or directory"},
        {"paste array.clip", "array.clip is not a JSON object"},
        {"duplicate", "nothing is selected"},
        {"copy", "nothing is selected"},
        {"duplicate-resource materials nothing", "materials has no record nothing"},
        {"delete-resource textures stone", "the project has no textures"},
        {"undo 2", "there is only 1 step to undo"},
        {"redo", "there is nothing to redo"},
        {"undo 0", "the count has to be a positive number, not 0"},
        {"undo 99999999999999999999", "the count has to be a positive number, not 99999999999999999999"},
        {"select stage", nullptr},
        {"reparent hips", "can't move the selected objects under hips, which is selected or lies below a selected object"},
        {"reparent stage", "can't move the selected objects under stage, which is selected or lies below a selected object"},
        {"select hero", nullptr},
        {"paste deep.clip", "deep.clip is not valid JSON: byte 256: nested deeper than 256 levels"},
        {"help nothing", "unknown command nothing; \"help\" lists the commands"},
    };
    std::string input = "delete spine\n", expectedErrors;
    for(const auto& refusal: refusals) {
        input += refusal.command + std::string{"\n"};
        if(refusal.error) expectedErrors += "error: " + std::string{refusal.error} + "\n";
    }
    /* The deleted spine and the selected hero are as before every refusal */
    input += "history\nselection\nquit\nundo\nquit\n";

    const Outcome session = runInTerminal("scene.json", input);
    EXPECT_EQ(session.status, 0);
    ASSERT_EQ(session.err.substr(0, expectedErrors.size()), expectedErrors);
    EXPECT_EQ(session.err.substr(expectedErrors.size()),
        "error: there are unsaved changes to /objects/spine/deleted; save them, or use quit! to discard them\n");
    /* One prompt per line read, and one before the end of input */
    const std::string out = session.out;
    std::size_t prompts = 0;
    for(std::size_t at = out.find("quelmar> "); at != std::string::npos; at = out.find("quelmar> ", at + 1)) ++prompts;
    EXPECT_EQ(prompts, lines(input).size());
    EXPECT_NE(out.find("1 change in 1 step: 1 to undo, 0 to redo\n"), std::string::npos);
    EXPECT_NE(out.find("quelmar> hero \"Hero\"\n"), std::string::npos);
}

/* Whatever the input, the program ends with a status of its own, never by
   a signal, and every diagnostic line is one of its own */
TEST_F(QuelmarProgramTest, HostileInputDoesNotAbort) {
    writeText(path("odd.clip"), "{\"objects\":{\"a\":5,\"b\":{\"parent\":7,\"skin\":[],\"components\":[3,{\"type\":\"mesh\",\"mesh\":2}]}},"
        "\"skins\":{\"s\":{\"joints\":[1,null,\"b\"]},\"t\":[]}}");
    writeText(path("nul.clip"), std::string{"{\"objects\":{}}\0x", 16});
    writeText(path("cycle.json"), "{\"objects\":{\"a\":{\"parent\":\"b\"},\"b\":{\"parent\":\"a\"},\"c\":{\"parent\":\"c\"}}}");
    const std::string inputs[]{
        "set /objects/hero/parent \"hero\"\ntree\nselect hero\ndelete\nundo\nduplicate --trees\nreparent root --keep-transform\n",
        "set /objects/hero/transformation [0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,1]\nselect lamp\nreparent hero --keep-transform\nreparent hero\ntree\n",
        "set /objects/hero/transformation [1e308,0,0,0,0,1e308,0,0,0,0,1e308,0,0,0,0,1]\nselect sword\nreparent root --keep-transform\n",
        "set /x " + std::string(300, '[') + std::string(300, ']') + "\n",
        "set /skins/heroSkin/joints [1, {}, null]\nselect hero\ncopy --trees\npaste\nduplicate --trees\n",
        "select camera\npaste odd.clip\npaste nul.clip\ntree\n",
        std::string{"select hero\0\nadd \0x\n", 21},
        "set /objects/hero {}\nremove /objects/hero\nundo\nredo\nundo 2\nredo 2\nremove /objects\ntree\nadd A\nundo\nundo\ntree\n",
        "add A\nadd A\nadd A\nselect hero stage\nreparent camera --keep-transform\nduplicate\nduplicate --trees\ncopy\npaste --child\nundo 3\nredo 3\n",
    };
    for(const std::string& input: inputs) {
        SCOPED_TRACE(input);
        for(const char* project: {"scene.json", "cycle.json"}) {
            const Outcome result = run(project, input + "tree\nhistory\nquit!\n");
            EXPECT_TRUE(result.status == 0 || result.status == 1) << result.status << result.err;
            for(const std::string& line: lines(result.err))
                EXPECT_TRUE(line.find("error: ") == 0 || line.find("warning: ") == 0) << line;
        }
    }
}

/* A save that dies before its rename leaves the old file byte for byte.
   The kernel stops the program once it writes past a file size limit, which
   it reaches while writing the temporary file; with the signal ignored the
   write fails instead and the save reports it */
TEST_F(QuelmarProgramTest, InterruptedSaveKeepsTheOldFile) {
    const std::string original = readText(path("scene.json"));
    const std::string commands = "-c 'set /padding \"" + std::string(20000, 'x') + "\"; save'";

    const Outcome killed = run("scene.json " + commands, {}, "ulimit -f 16;");
    EXPECT_EQ(killed.status, 128 + SIGXFSZ);
    EXPECT_EQ(readText(path("scene.json")), original);
    /* It died between the temporary file and the rename */
    EXPECT_EQ(std::system(("ls " + shellQuoted(dir) + "/scene.json.?????? >/dev/null 2>&1").data()), 0);

    const Outcome failed = run("scene.json " + commands, {}, "trap '' XFSZ; ulimit -f 16;");
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.err, "error: Can't save scene.json: File too large\n");
    EXPECT_EQ(readText(path("scene.json")), original);

    /* The failed save didn't count as a save */
    const Outcome unsaved = run("scene.json -c 'set /padding 1; save /nonexistent/dir/x.json; status'");
    EXPECT_EQ(unsaved.status, 1);
    EXPECT_EQ(unsaved.err, "error: Can't save /nonexistent/dir/x.json: No such file or directory\n");
}

/* A large project: load, duplicate a 5,000-object tree, undo, redo and
   save, all within a few seconds. The sanitizer build is many times slower
   and checks a tenth of it. */
TEST_F(QuelmarProgramTest, LargeProject) {
#if defined(__SANITIZE_ADDRESS__)
    constexpr std::size_t Objects = 5000, Duplicated = 500;
    constexpr double Seconds = 30.0;
#else
    constexpr std::size_t Objects = 50000, Duplicated = 5000;
    constexpr double Seconds = 5.0;
#endif
    std::string json = "{\"objects\":{\n\"group\":{\"name\":\"Group\"}";
    const std::string transformation = ",\"transformation\":[1,0,0,0,0,1,0,0,0,0,1,0,1.5,2.5,3.5,1]";
    for(std::size_t i = 1; i != Objects; ++i) {
        const std::string key = "o" + std::to_string(i);
        json += ",\n\"" + key + "\":{\"name\":\"Object " + std::to_string(i) + "\"" +
            (i < Duplicated ? ",\"parent\":\"group\"" : "") + transformation + "}";
    }
    json += "}}\n";
    writeText(path("large.json"), json);

    const auto start = std::chrono::steady_clock::now();
    const Outcome loaded = run("large.json -c status");
    const auto afterLoad = std::chrono::steady_clock::now();
    const Outcome edited = run("large.json -c 'select group; duplicate --trees; undo; redo; save; status'");
    const auto end = std::chrono::steady_clock::now();

    ASSERT_EQ(loaded.status, 0) << loaded.err;
    ASSERT_EQ(edited.status, 0) << edited.err;
    EXPECT_NE(loaded.out.find("objects: " + std::to_string(Objects) + " in the scene\n"), std::string::npos);
    EXPECT_NE(edited.out.find("duplicated " + std::to_string(Duplicated) + " objects:"), std::string::npos);
    EXPECT_NE(edited.out.find("objects: " + std::to_string(Objects + Duplicated) + " in the scene\n"), std::string::npos);
    EXPECT_NE(edited.out.find("\nsaved\n"), std::string::npos);

    const double loadSeconds = std::chrono::duration<double>(afterLoad - start).count();
    const double editSeconds = std::chrono::duration<double>(end - afterLoad).count();
    std::printf("%zu objects: load and status %.2f s; load, duplicate %zu, undo, redo, save %.2f s\n",
        Objects, loadSeconds, Duplicated, editSeconds);
    EXPECT_LT(editSeconds, Seconds);
}

}
