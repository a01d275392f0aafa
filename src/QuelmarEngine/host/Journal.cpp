#include "QuelmarEngine/host/Journal.h"

#include <cerrno>
#include <csignal>
#include <pthread.h>
#include <cstring>
#include <functional>
#include <fcntl.h>
#include <unistd.h>

#include "QuelmarEngine/JsonReader.h"
#include "QuelmarEngine/host/FileReading.h"

namespace QuelmarEngine {

namespace {

/* Starts every journal; the digit is the format's version */
constexpr char Magic[] = "QLMRJ 1\n";
constexpr std::size_t MagicSize = sizeof(Magic) - 1;
constexpr char BaseKind = 'F';

std::uint32_t crc32(const char* const data, const std::size_t size, std::uint32_t crc = 0) {
    static const struct Table {
        std::uint32_t values[256];
        Table() {
            for(std::uint32_t i = 0; i != 256; ++i) {
                std::uint32_t c = i;
                for(int k = 0; k != 8; ++k) c = c & 1 ? 0xedb88320u ^ (c >> 1) : c >> 1;
                values[i] = c;
            }
        }
    } table;
    crc = ~crc;
    for(std::size_t i = 0; i != size; ++i)
        crc = table.values[(crc ^ std::uint8_t(data[i])) & 0xff] ^ (crc >> 8);
    return ~crc;
}

void putNumber(std::string& out, std::uint64_t value, const std::size_t bytes) {
    for(std::size_t i = 0; i != bytes; ++i, value >>= 8) out += char(value & 0xff);
}

void putText(std::string& out, const Containers::StringView text) {
    putNumber(out, text.size(), 4);
    out.append(text.data(), text.size());
}

/* Frames @p payload: its length and the CRC-32 of length and payload */
std::string framed(const std::string& payload) {
    std::string entry;
    putNumber(entry, payload.size(), 4);
    const std::uint32_t crc = crc32(payload.data(), payload.size(), crc32(entry.data(), 4));
    putNumber(entry, crc, 4);
    return entry + payload;
}

/* Reads what a payload holds, failing past its end */
struct Cursor {
    const char* data;
    std::size_t size;
    std::size_t at{};

    bool number(std::uint64_t& value, const std::size_t bytes) {
        if(size - at < bytes) return false;
        value = 0;
        for(std::size_t i = 0; i != bytes; ++i) value |= std::uint64_t(std::uint8_t(data[at + i])) << 8*i;
        at += bytes;
        return true;
    }
    bool text(std::string& value) {
        std::uint64_t length;
        if(!number(length, 4) || size - at < length) return false;
        value.assign(data + at, length);
        at += length;
        return true;
    }
};

/* A value in binary, numbers bit for bit: the tag, then what it needs */
void putValue(std::string& out, const rapidjson::Value& value) {
    if(value.IsNull()) out += 'n';
    else if(value.IsBool()) out += value.GetBool() ? 't' : 'f';
    else if(value.IsInt64()) {
        out += 'i';
        putNumber(out, std::uint64_t(value.GetInt64()), 8);
    } else if(value.IsUint64()) {
        out += 'u';
        putNumber(out, value.GetUint64(), 8);
    } else if(value.IsDouble()) {
        out += 'd';
        const double number = value.GetDouble();
        std::uint64_t bits;
        std::memcpy(&bits, &number, 8);
        putNumber(out, bits, 8);
    } else if(value.IsString()) {
        out += 's';
        putText(out, {value.GetString(), value.GetStringLength()});
    } else if(value.IsArray()) {
        out += 'a';
        putNumber(out, value.Size(), 4);
        for(const rapidjson::Value& element: value.GetArray()) putValue(out, element);
    } else {
        out += 'o';
        putNumber(out, value.MemberCount(), 4);
        for(const auto& member: value.GetObject()) {
            putText(out, {member.name.GetString(), member.name.GetStringLength()});
            putValue(out, member.value);
        }
    }
}

bool readValue(Cursor& in, rapidjson::Value& value, rapidjson::Document::AllocatorType& allocator, const unsigned depth) {
    std::uint64_t tag, number;
    std::string text;
    if(!depth || !in.number(tag, 1)) return false;
    switch(char(tag)) {
        case 'n': value.SetNull(); return true;
        case 't': value.SetBool(true); return true;
        case 'f': value.SetBool(false); return true;
        case 'i': if(!in.number(number, 8)) return false; value.SetInt64(std::int64_t(number)); return true;
        case 'u': if(!in.number(number, 8)) return false; value.SetUint64(number); return true;
        case 'd': {
            if(!in.number(number, 8)) return false;
            double d;
            std::memcpy(&d, &number, 8);
            value.SetDouble(d);
            return true;
        }
        case 's': if(!in.text(text)) return false; value.SetString(text.data(), rapidjson::SizeType(text.size()), allocator); return true;
        case 'a':
            if(!in.number(number, 4)) return false;
            value.SetArray();
            for(std::uint64_t i = 0; i != number; ++i) {
                rapidjson::Value element;
                if(!readValue(in, element, allocator, depth - 1)) return false;
                value.PushBack(element, allocator);
            }
            return true;
        case 'o':
            if(!in.number(number, 4)) return false;
            value.SetObject();
            for(std::uint64_t i = 0; i != number; ++i) {
                rapidjson::Value name, member;
                if(!in.text(text) || !readValue(in, member, allocator, depth - 1)) return false;
                name.SetString(text.data(), rapidjson::SizeType(text.size()), allocator);
                value.AddMember(name, member, allocator);
            }
            return true;
    }
    return false;
}

bool decodeBase(Cursor& in, FileStamp& base) {
    std::uint64_t exists, size;
    if(!in.number(exists, 1) || !in.number(size, 8) || !in.number(base.hash, 8)) return false;
    base.exists = exists;
    base.size = size;
    return true;
}

bool decodeEntry(Cursor& in, JournalEntry& entry) {
    std::uint64_t value;
    if(!in.number(value, 1)) return false;
    entry.kind = JournalEntryKind(char(value));
    if(entry.kind == JournalEntryKind::Undo || entry.kind == JournalEntryKind::Redo)
        return in.number(value, 8) && (entry.count = std::size_t(value));
    if(entry.kind != JournalEntryKind::Step || !in.text(entry.label) || !in.number(value, 4)) return false;
    entry.records.resize(std::size_t(value));
    for(JournalRecord& record: entry.records) {
        std::uint64_t hasValue;
        if(!in.text(record.path) || !in.number(hasValue, 1) || hasValue > 1) return false;
        record.hasValue = hasValue;
        if(hasValue && !in.text(record.value)) return false;
    }
    return !entry.records.empty();
}

}

bool readJournalValue(const Containers::StringView bytes, rapidjson::Document& value) {
    Cursor in{bytes.data(), bytes.size()};
    return readValue(in, value, value.GetAllocator(), JsonMaxDepth) && in.at == in.size;
}

std::string journalPathFor(const Containers::StringView path) {
    const std::string file{path.data(), path.size()};
    const std::size_t slash = file.rfind('/');
    const std::size_t name = slash == std::string::npos ? 0 : slash + 1;
    return file.substr(0, name) + "." + file.substr(name) + ".journal";
}

JournalStep::JournalStep(const Containers::StringView label) {
    _payload += char(JournalEntryKind::Step);
    putText(_payload, label);
    _countAt = _payload.size();
    putNumber(_payload, 0, 4);
}

void JournalStep::add(const Containers::StringView path, const rapidjson::Value* const value) {
    putText(_payload, path);
    _payload += char(value ? 1 : 0);
    if(value) {
        /* Its length first, so that reading the entry needn't decode it */
        const std::size_t at = _payload.size();
        putNumber(_payload, 0, 4);
        putValue(_payload, *value);
        std::string length;
        putNumber(length, _payload.size() - at - 4, 4);
        _payload.replace(at, 4, length);
    }
    ++_count;
}

std::string JournalStep::finish() {
    std::string count;
    putNumber(count, _count, 4);
    _payload.replace(_countAt, 4, count);
    return std::move(_payload);
}

std::string journalTravel(const JournalEntryKind kind, const std::size_t count) {
    std::string payload{char(kind)};
    putNumber(payload, count, 8);
    return payload;
}

std::string journalFrame(const std::string& entries) {
    return framed(entries);
}

/* Starts the thread that syncs, with every signal blocked: the program's
   handlers expect to interrupt the thread that reads its input */
std::thread startSyncer(std::function<void()> body) {
    sigset_t all, previous;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &previous);
    std::thread thread{std::move(body)};
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    return thread;
}

bool readJournal(const Containers::StringView path, JournalContents& contents, std::string& error) {
    contents = {};
    std::string text;
    if(!readFile(path, text, error, ~std::size_t{})) return false;
    contents.fileSize = text.size();
    bool haveBase = false;
    if(text.compare(0, MagicSize, Magic) == 0) for(std::size_t at = MagicSize; text.size() - at >= 8; ) {
        Cursor frame{text.data() + at, 8};
        std::uint64_t size, crc;
        frame.number(size, 4);
        frame.number(crc, 4);
        if(text.size() - at - 8 < size || crc32(text.data() + at + 8, size, crc32(text.data() + at, 4)) != crc) break;
        Cursor in{text.data() + at + 8, std::size_t(size)};
        std::vector<JournalEntry> entries;
        if(!haveBase) {
            std::uint64_t kind;
            if(!in.number(kind, 1) || kind != std::uint64_t(BaseKind) || !decodeBase(in, contents.base) || in.at != in.size) break;
            haveBase = true;
        } else {
            /* The entries of one frame stand or fall together */
            while(in.at != in.size && decodeEntry(in, entries.emplace_back())) {}
            if(in.at != in.size || entries.empty()) break;
        }
        at += 8 + std::size_t(size);
        contents.validSize = at;
        for(JournalEntry& entry: entries) {
            entry.end = at;
            contents.entries.push_back(std::move(entry));
        }
    }
    if(haveBase) return true;
    error = "it is not a journal or its start is damaged";
    return false;
}

JournalWriter::~JournalWriter() {
    close();
}

bool JournalWriter::create(const std::string& path, const FileStamp& base, std::string& error) {
    close();
    _fd = ::open(path.data(), O_WRONLY|O_CREAT|O_TRUNC|O_CLOEXEC, 0666);
    if(_fd < 0) {
        error = std::strerror(errno);
        return false;
    }
    _size = 0;
    std::string payload{BaseKind};
    putNumber(payload, base.exists, 1);
    putNumber(payload, base.size, 8);
    putNumber(payload, base.hash, 8);
    _start = std::string{Magic, MagicSize} + framed(payload);
    /* A new file is there for good only once its folder is synced */
    const std::size_t slash = path.rfind('/');
    _syncer = startSyncer([this, folder = slash == std::string::npos ? std::string{"."} : path.substr(0, slash + 1)] { syncLoop(folder); });
    return true;
}

bool JournalWriter::resume(const std::string& path, const std::size_t size, std::string& error) {
    close();
    _fd = ::open(path.data(), O_WRONLY|O_CLOEXEC);
    if(_fd < 0 || ::ftruncate(_fd, off_t(size)) != 0 || ::lseek(_fd, off_t(size), SEEK_SET) < 0 || ::fdatasync(_fd) != 0) {
        error = std::strerror(errno);
        close();
        return false;
    }
    _size = size;
    _syncer = startSyncer([this] { syncLoop({}); });
    return true;
}

bool JournalWriter::append(Containers::StringView entry, std::string& error) {
    /* The start and the first frame in one write */
    std::string first;
    if(!_start.empty()) {
        first = _start + std::string{entry.data(), entry.size()};
        entry = {first.data(), first.size()};
    }
    for(std::size_t written = 0; written < entry.size(); ) {
        const ssize_t count = ::write(_fd, entry.data() + written, entry.size() - written);
        if(count < 0 && errno == EINTR) continue;
        if(count <= 0) {
            error = count < 0 ? std::strerror(errno) : "nothing could be written";
            /* A whole entry or none: the next one must follow a whole one */
            if(::ftruncate(_fd, off_t(_size)) != 0 || ::lseek(_fd, off_t(_size), SEEK_SET) < 0) close();
            return false;
        }
        written += std::size_t(count);
    }
    _size += entry.size();
    _start.clear();
    std::lock_guard<std::mutex> lock{_mutex};
    ++_appended;
    _wake.notify_one();
    if(_syncError.empty()) return true;
    error = "syncing it failed: " + _syncError;
    _syncError.clear();
    return false;
}

void JournalWriter::syncLoop(std::string folder) {
    std::unique_lock<std::mutex> lock{_mutex};
    for(;;) {
        _wake.wait(lock, [this] { return _stop || _appended != _syncedCount; });
        if(_appended == _syncedCount) return;
        const std::size_t target = _appended;
        lock.unlock();
        int failed = ::fdatasync(_fd) != 0 ? errno : 0;
        if(!failed && !folder.empty()) {
            const int fd = ::open(folder.data(), O_RDONLY|O_DIRECTORY|O_CLOEXEC);
            if(fd >= 0) {
                if(::fsync(fd) != 0) failed = errno;
                ::close(fd);
            }
            folder.clear();
        }
        lock.lock();
        _syncedCount = target;
        if(failed) _syncError = std::strerror(failed);
    }
}

void JournalWriter::close() {
    if(_syncer.joinable()) {
        {
            std::lock_guard<std::mutex> lock{_mutex};
            _stop = true;
            _wake.notify_one();
        }
        _syncer.join();
    }
    if(_fd >= 0) ::close(_fd);
    _fd = -1;
    _start.clear();
    _appended = _syncedCount = 0;
    _stop = false;
    _syncError.clear();
}

}
