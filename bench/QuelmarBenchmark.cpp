/* The project's edits side by side with a map-based JSON history and raw
   RapidJSON pointer operations, in one process, at several project sizes.
   Times of the project include the scene refresh that the next read of the
   scene makes. `--smoke` runs every benchmark once at the smallest size. */

#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>
#include <unistd.h>
#include <benchmark/benchmark.h>
#include <Corrade/Utility/Debug.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "Documents.h"
#include "MapHistory.h"
#include "QuelmarEngine/ChangeManager.h"
#include "QuelmarEngine/Tools/ProjectTools.h"
#include "QuelmarEngine/host/EditSession.h"
#include "QuelmarEngine/host/QuelmarEditor.h"

using namespace QuelmarEngine;
using namespace QuelmarBenchmark;

namespace {

typedef std::chrono::steady_clock Clock;

/* The project of the size being measured, opened once for all of them */
struct Project {
    explicit Project(std::string text): text{std::move(text)} {
        editor.loadFromString({this->text.data(), this->text.size()});
    }

    /* Reads the scene, which brings it up to date */
    void refresh() { benchmark::DoNotOptimize(editor.scene->sceneGraph->header().objectCount); }

    /* The key of the record in the middle of "objects" */
    std::string middleKey() const {
        const rapidjson::Value& objects = (*editor.data.project.document)["objects"];
        return (objects.MemberBegin() + objects.MemberCount()/2)->name.GetString();
    }

    std::string text;
    QuelmarEditor editor;
};

/* One document of each kind at a time: benchmarks run size by size */
template<class T> T& cached(std::unique_ptr<T>& current, std::size_t& currentSize, const std::size_t size) {
    if(!current || currentSize != size) {
        current = nullptr;
        current.reset(new T{projectText(size)});
        currentSize = size;
    }
    return *current;
}

std::unique_ptr<Project> currentProject;
std::unique_ptr<MapHistory> currentMap;
std::unique_ptr<PointerHistory> currentPointer;
std::size_t currentProjectSize, currentMapSize, currentPointerSize;

Project& project(const std::size_t size) { return cached(currentProject, currentProjectSize, size); }
MapHistory& mapHistory(const std::size_t size) { return cached(currentMap, currentMapSize, size); }
PointerHistory& pointerHistory(const std::size_t size) { return cached(currentPointer, currentPointerSize, size); }

/* Set for a run that only shows that everything still runs */
int forcedIterations = 0;

void nothing(std::size_t) {}

/* Calls @p function @p count times */
template<class Function> void repeat(const std::size_t count, Function function) {
    for(std::size_t i = 0; i != count; ++i) function();
}

/* Per iteration, runs @p before, times @p timed run @p batch times and runs
   @p after, which takes back what the other two did to the document; before
   and after take the batch size. This machine is shared and a batch may wait
   for the processor: besides the mean, the counter "us" is the median batch,
   per operation. */
template<class Before, class Timed, class After = void(*)(std::size_t)> void measure(benchmark::State& state, const std::size_t batch, Before before, Timed timed, After after = nothing) {
    std::vector<double> times;
    for(auto _: state) {
        before(batch);
        const Clock::time_point start = Clock::now();
        repeat(batch, timed);
        const double seconds = std::chrono::duration<double>(Clock::now() - start).count()/batch;
        state.SetIterationTime(seconds);
        times.push_back(seconds*1.0e6);
        after(batch);
    }
    std::nth_element(times.begin(), times.begin() + times.size()/2, times.end());
    state.counters["us"] = times.empty() ? 0.0 : times[times.size()/2];
}

/* Batches of the same step */
constexpr std::size_t Batch = 32;

/* Registers @p function under @p name, ".../KIND/SIZE", with the document
   of that kind and size opened before its clock runs */
void registerManual(const std::string& name, std::function<void(benchmark::State&)> function, const int iterations = 0) {
    const std::size_t size = std::stoul(name.substr(name.rfind('/') + 1));
    const std::string kind = name.substr(0, name.rfind('/'));
    benchmark::internal::Benchmark* const b = benchmark::RegisterBenchmark(name.data(), [=](benchmark::State& state) {
        if(kind.find("/project") != std::string::npos) project(size);
        else if(kind.find("/mapHistory") != std::string::npos) mapHistory(size);
        else if(kind.find("/rapidjson") != std::string::npos) pointerHistory(size);
        function(state);
    });
    b->UseManualTime()->Unit(benchmark::kMicrosecond);
    if(forcedIterations) b->Iterations(forcedIterations);
    else if(iterations) b->Iterations(iterations);
}

/* "push/STEPS", "undo/STEPS" and "redo/STEPS": a batch of pushes, of undos of
   as many pushes, of redos of as many undos. With @p takeBack the document
   gets back what each batch did before the next. */
template<class Push, class Undo, class Redo> void registerSteps(const std::string& steps, const std::size_t batch, Push push, Undo undo, Redo redo, const bool takeBack) {
    const auto undoAll = [=](std::size_t count) { repeat(count, undo); };
    registerManual("push/" + steps, [=](benchmark::State& state) {
        if(takeBack) measure(state, batch, nothing, push, undoAll);
        else measure(state, batch, nothing, push);
    });
    registerManual("undo/" + steps, [=](benchmark::State& state) {
        measure(state, batch, [=](std::size_t count) { repeat(count, push); }, undo);
    });
    registerManual("redo/" + steps, [=](benchmark::State& state) {
        const auto pushAndUndo = [=](std::size_t count) { repeat(count, push); repeat(count, undo); };
        if(takeBack) measure(state, batch, pushAndUndo, redo, undoAll);
        else measure(state, batch, pushAndUndo, redo);
    });
}

void undoProject(const std::size_t n) { project(n).editor.changeManager->undoLast(); project(n).refresh(); }
void redoProject(const std::size_t n) { project(n).editor.changeManager->redoLastUndo(); project(n).refresh(); }

/* "STEPS/project/N", "STEPS/mapHistory/N" and "STEPS/rapidjson/N", each
   undone and redone by its own history */
template<class ProjectPush, class MapPush, class PointerPush> void registerKinds(const std::string& steps, const std::size_t n, const std::size_t batch, const std::size_t mapBatch, ProjectPush projectPush, MapPush mapPush, PointerPush pointerPush, const bool takeBack) {
    const std::string size = "/" + std::to_string(n);
    registerSteps(steps + "/project" + size, batch, projectPush, [n] { undoProject(n); }, [n] { redoProject(n); }, takeBack);
    registerSteps(steps + "/mapHistory" + size, mapBatch, mapPush, [n] { mapHistory(n).undo(); }, [n] { mapHistory(n).redo(); }, takeBack);
    registerSteps(steps + "/rapidjson" + size, batch, pointerPush, [n] { pointerHistory(n).undo(); }, [n] { pointerHistory(n).redo(); }, takeBack);
}

void registerValueEdits(const std::size_t n) {
    const std::shared_ptr<std::size_t> next = std::make_shared<std::size_t>();
    const std::shared_ptr<const std::vector<std::string>> paths = std::make_shared<std::vector<std::string>>(valuePaths(n));
    const auto path = [=] { return (*paths)[++*next % paths->size()]; };
    const auto value = [=] { return double(*next % 7); };
    const auto push = [=] { project(n).editor.changeManager->pushChange(path().data(), rapidjson::Value{value()}, false); };
    registerKinds("valueEdit", n, Batch, Batch, [=] { push(); project(n).refresh(); },
        [=] { mapHistory(n).push(path(), nlohmann::json(value())); },
        [=] {
            const rapidjson::Value number{value()};
            pointerHistory(n).push(path(), &number);
        }, false);
    /* The refresh alone, one edit at a time */
    registerManual("refresh/valueEdit/project/" + std::to_string(n), [=](benchmark::State& state) {
        measure(state, 1, [=](std::size_t) { push(); }, [n]{ project(n).refresh(); });
    });
}

/* Each removal is taken back after it is measured, so the map keeps its size.
   A map has no middle: it loses the key in the middle of the numbering, once
   a batch. */
void registerRemovals(const std::size_t n) {
    const std::string mapPath = "/objects/" + objectKey(n/2);
    registerKinds("removeRecord", n, 4, 1, [n] {
            Project& p = project(n);
            p.editor.changeManager->pushRemoval(("/objects/" + p.middleKey()).data());
            p.refresh();
        }, [=] { mapHistory(n).push(mapPath, std::nullopt); },
        [n] {
            const rapidjson::Value& objects = pointerHistory(n).document["objects"];
            pointerHistory(n).push(std::string{"/objects/"} + (objects.MemberBegin() + objects.MemberCount()/2)->name.GetString(), nullptr);
        }, true);
}

/* The first 5,000 objects of the map duplicated, undone and redone */
void registerDuplicate(const std::size_t n, const int iterations) {
    const std::string size = std::to_string(n);
    const std::size_t count = std::min<std::size_t>(5000, n/2);
    const auto select = [n, count] {
        StringArray keys{count};
        for(std::size_t i = 0; i != count; ++i) keys.add(objectKey(i).data());
        selectObjects(project(n).editor, keys);
    };
    const auto duplicateAll = [n] { duplicate(project(n).editor); project(n).refresh(); };
    const auto undo = [n] { undoProject(n); };
    const auto redo = [n] { redoProject(n); };
    const std::string name = "duplicate" + std::to_string(count);
    registerManual(name + "/project/" + size, [=](benchmark::State& state) { measure(state, 1, [=](std::size_t) { select(); }, duplicateAll, [=](std::size_t) { undo(); }); }, iterations);
    registerManual("undo/" + name + "/project/" + size, [=](benchmark::State& state) { measure(state, 1, [=](std::size_t) { select(); duplicateAll(); }, undo); }, iterations);
    registerManual("redo/" + name + "/project/" + size, [=](benchmark::State& state) { measure(state, 1, [=](std::size_t) { select(); duplicateAll(); undo(); }, redo, [=](std::size_t) { undo(); }); }, iterations);
}

void registerRename(const std::size_t n) {
    std::shared_ptr<std::size_t> next = std::make_shared<std::size_t>();
    registerManual("refresh/rename/project/" + std::to_string(n), [=](benchmark::State& state) {
        measure(state, 1, [&](std::size_t) {
            Project& p = project(n);
            p.editor.changeManager->pushChange(("/objects/" + objectKey(++*next % n) + "/name").data(), ("Renamed " + std::to_string(*next)).data(), false);
        }, [&]{ project(n).refresh(); });
    });
}

/* Whole session steps on a project file in a fresh folder under TMPDIR, with
   the recovery journal ("session") and without ("sessionNoJournal"): a value
   edit, and a duplicate of the first 5,000 objects; each undone untimed */
void registerSessionSteps(const std::size_t n, const int iterations) {
    const std::size_t count = std::min<std::size_t>(5000, n/2);
    for(const bool journal: {true, false}) {
        const std::string kind = journal ? "/session/" : "/sessionNoJournal/";
        const auto run = [=](benchmark::State& state, const std::function<void(EditSession&)>& before, const std::function<void(EditSession&)>& timed) {
            const char* const temporary = std::getenv("TMPDIR");
            std::string folder = std::string{temporary && *temporary ? temporary : "/tmp"} + "/QuelmarBenchmark.XXXXXX";
            if(!::mkdtemp(folder.data())) return state.SkipWithError("can't make a folder");
            const std::string file = folder + "/project.json";
            std::FILE* const out = std::fopen(file.data(), "wb");
            const std::string text = projectText(n);
            std::fwrite(text.data(), 1, text.size(), out);
            std::fclose(out);
            {
                EditSession session;
                session.setJournalling(journal);
                if(!session.open({file.data(), file.size()})) return state.SkipWithError("can't open the project");
                measure(state, 1, [&](std::size_t) { before(session); }, [&]{ timed(session); },
                    [&](std::size_t) { static_cast<void>(session.undo()); });
            }
            std::remove((folder + "/.project.json.journal").data());
            std::remove(file.data());
            ::rmdir(folder.data());
        };
        std::shared_ptr<std::size_t> next = std::make_shared<std::size_t>();
        registerManual("step/set" + kind + std::to_string(n), [=](benchmark::State& state) {
            const std::string path = "/objects/" + objectKey(n/2) + "/name";
            run(state, [](EditSession&) {}, [=](EditSession& session) {
                const std::string value = "\"Renamed " + std::to_string(++*next) + "\"";
                static_cast<void>(session.set({path.data(), path.size()}, {value.data(), value.size()}));
            });
        }, iterations*10);
        registerManual("step/duplicate" + std::to_string(count) + kind + std::to_string(n), [=](benchmark::State& state) {
            std::vector<std::string> keys;
            for(std::size_t i = 0; i != count; ++i) keys.push_back(objectKey(i));
            std::vector<Containers::StringView> references;
            for(const std::string& key: keys) references.emplace_back(key.data(), key.size());
            run(state, [&](EditSession& session) { static_cast<void>(session.select({references.data(), references.size()})); },
                [](EditSession& session) { static_cast<void>(session.duplicate(SelectionExtent::Objects)); });
        }, iterations);
    }
}

void registerLoadAndSave(const std::size_t n, const int iterations) {
    const std::string size = std::to_string(n);
    registerManual("load/project/" + size, [=](benchmark::State& state) {
        Project& p = project(n);
        measure(state, 1, nothing, [&]{ p.editor.loadFromString({p.text.data(), p.text.size()}); p.refresh(); });
    }, iterations);
    registerManual("save/project/" + size, [=](benchmark::State& state) {
        measure(state, 1, nothing, [&]{ benchmark::DoNotOptimize(project(n).editor.data.project.toJson()); });
    }, iterations);
    registerManual("load/mapHistory/" + size, [=](benchmark::State& state) {
        const std::string text = projectText(n);
        measure(state, 1, nothing, [&]{ benchmark::DoNotOptimize(nlohmann::json::parse(text)); });
    }, iterations);
    registerManual("save/mapHistory/" + size, [=](benchmark::State& state) {
        const nlohmann::json document = nlohmann::json::parse(projectText(n));
        measure(state, 1, nothing, [&]{ benchmark::DoNotOptimize(document.dump()); });
    }, iterations);
    registerManual("load/rapidjson/" + size, [=](benchmark::State& state) {
        const std::string text = projectText(n);
        measure(state, 1, nothing, [&]{ rapidjson::Document document; document.Parse(text.data()); benchmark::DoNotOptimize(document.MemberCount()); });
    }, iterations);
    registerManual("save/rapidjson/" + size, [=](benchmark::State& state) {
        rapidjson::Document document;
        document.Parse(projectText(n).data());
        measure(state, 1, nothing, [&]{
            rapidjson::StringBuffer buffer;
            rapidjson::Writer<rapidjson::StringBuffer> writer{buffer};
            document.Accept(writer);
            benchmark::DoNotOptimize(buffer.GetSize());
        });
    }, iterations);
}

}

int main(int argc, char** argv) {
    bool smoke = false;
    std::vector<char*> arguments;
    for(int i = 0; i != argc; ++i) {
        if(std::strcmp(argv[i], "--smoke") == 0) smoke = true;
        else arguments.push_back(argv[i]);
    }
    int count = int(arguments.size());

    /* Warnings and progress lines of the commands would drown the table */
    std::ostringstream silenced;
    Utility::Debug silenceDebug{&silenced};
    Utility::Warning silenceWarning{&silenced};

    if(smoke) forcedIterations = 1;
    const std::vector<std::size_t> sizes = smoke ? std::vector<std::size_t>{1000} : std::vector<std::size_t>{1000, 10000, 50000, 65000};
    for(const std::size_t n: sizes) {
        registerValueEdits(n);
        registerRemovals(n);
        registerRename(n);
        registerDuplicate(n, 10);
        registerSessionSteps(n, 10);
        registerLoadAndSave(n, 10);
    }
    benchmark::Initialize(&count, arguments.data());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    currentProject = nullptr;
    currentMap = nullptr;
    currentPointer = nullptr;
}
