#include "Platform/CSecondInstance.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "Platform/CClock.h"

namespace {

constexpr unsigned char kTaken = 1;
constexpr char kQuestion = 1;   // in front of a text: no path begins with it
constexpr int kStart_TriesASecond = 200;

/** FNV-1a, 64 bits: short, steady over runs and machines. A collision would join two libraries, at odds of 2^-64. */
std::string HashName(std::string_view text) {
    std::uint64_t hash = 14695981039346656037ULL;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
    std::array<char, 17> hex{};
    std::snprintf(hex.data(), hex.size(), "%016llx", static_cast<unsigned long long>(hash));
    return hex.data();
}

/** The root without links where it is there, so that two spellings of one folder meet. */
std::string RootName(const std::filesystem::path& root) {
    std::error_code err;
    const std::filesystem::path real = std::filesystem::weakly_canonical(root, err);
    return err ? root.string() : real.string();
}

int MillisecondsLeft(double untilT) {
    const double leftT = untilT - CClock::Get().SteadyT();
    return leftT <= 0 ? 0 : static_cast<int>(leftT * 1000) + 1;
}

/** A connection, and how long one waits for its other end. */
struct Line {
    int handle;
    double untilT;
    int stop = -1;   // readable or closed: nobody waits any more
};

/** Waits until the line is ready for `events`; ETIMEDOUT when its time is over, ECANCELED when it was stopped. */
int WaitFor(const Line& line, short events) {
    for (;;) {
        struct pollfd both[2] = {{line.handle, events, 0}, {line.stop, POLLIN, 0}};
        const int ready = ::poll(both, 2, MillisecondsLeft(line.untilT));
        if (ready > 0) return both[1].revents != 0 ? ECANCELED : 0;
        if (ready == 0 && MillisecondsLeft(line.untilT) == 0) return ETIMEDOUT;
        if (ready < 0 && errno != EINTR) return errno;
    }
}

/** All of `bytes` in time, or an errno. */
int SendAll(const Line& line, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(line.handle, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            if (const int err = WaitFor(line, POLLOUT); err != 0) return err;
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

/** Fills `bytes` in time, or an errno; EPIPE when the other end has gone. */
int ReceiveAll(const Line& line, char* bytesP, std::size_t sizeL) {
    while (sizeL > 0) {
        const ssize_t got = ::recv(line.handle, bytesP, sizeL, MSG_DONTWAIT);
        if (got > 0) {
            bytesP += got;
            sizeL -= static_cast<std::size_t>(got);
        } else if (got == 0) {
            return EPIPE;
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            if (const int err = WaitFor(line, POLLIN); err != 0) return err;
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

/** An address has 108 bytes for its path and a runtime folder can be longer: then the road goes through the folder's
    open handle, whose name under /proc is short. */
int Address(const std::filesystem::path& socket, int folderHandle, struct sockaddr_un& address) {
    std::string path = socket.string();
    if (path.size() >= sizeof address.sun_path)
        path = "/proc/self/fd/" + std::to_string(folderHandle) + "/" + socket.filename().string();
    if (path.size() >= sizeof address.sun_path) return ENAMETOOLONG;
    address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return 0;
}

int NewSocket() { return ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0); }

int Bind(int handle, const struct sockaddr_un& address) {
    return ::bind(handle, reinterpret_cast<const struct sockaddr*>(&address), sizeof address) == 0 ? 0 : errno;
}

std::string LengthOf(std::string_view text) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(text.size() >> shift & 255U);
    return bytes;
}

/** A length and as many bytes, in time, or an errno; EMSGSIZE for more than `mostL`. */
int ReceiveText(const Line& line, std::string& text, std::size_t mostL) {
    std::array<char, 4> header{};
    if (const int err = ReceiveAll(line, header.data(), header.size()); err != 0) return err;
    std::uint32_t sizeL = 0;
    for (const char c : header) sizeL = sizeL << 8 | static_cast<unsigned char>(c);
    if (sizeL > mostL) return EMSGSIZE;
    text.resize(sizeL);
    return ReceiveAll(line, text.data(), text.size());
}

bool OfThisUser(int connection) {
    struct ucred other {};
    socklen_t sizeL = sizeof other;
    return ::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &other, &sizeL) == 0 && other.uid == ::geteuid();
}

}   // namespace

CSecondInstance::Handle& CSecondInstance::Handle::operator=(Handle&& other) noexcept {
    if (this != &other) {
        Close();
        i_number = std::exchange(other.i_number, -1);
    }
    return *this;
}

void CSecondInstance::Handle::Close() {
    if (i_number >= 0) ::close(std::exchange(i_number, -1));
}

CSecondInstance::CSecondInstance(std::filesystem::path folder, const std::filesystem::path& root)
    : i_folder(std::move(folder)), i_base(i_folder / ("vopla-" + HashName(RootName(root)))) {}

CSecondInstance::~CSecondInstance() { StopListening(); }

int CSecondInstance::MakeFolder() const {
    std::error_code err;
    std::filesystem::create_directories(i_folder.parent_path(), err);
    if (::mkdir(i_folder.c_str(), 0700) != 0 && errno != EEXIST) return errno;
    struct stat info {};
    if (::stat(i_folder.c_str(), &info) != 0) return errno;
    if (!S_ISDIR(info.st_mode)) return ENOTDIR;
    // In a folder of another user that user could take our place: the fallback lies in a folder open to all.
    return info.st_uid == ::geteuid() ? 0 : EACCES;
}

int CSecondInstance::TakeLock() {
    Handle lock{::open(LockFile().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)};
    if (!lock) return errno;
    while (::flock(lock.Number(), LOCK_EX | LOCK_NB) != 0)
        if (errno != EINTR) return errno;
    i_lock = std::move(lock);   // the file stays for ever: removing it would let two hold "the" lock
    return 0;
}

int CSecondInstance::OpenSocket() {
    // With the lock in hand whatever lies here is dead.
    if (::unlink(SocketFile().c_str()) != 0 && errno != ENOENT) return errno;
    struct sockaddr_un address;
    if (const int err = Address(SocketFile(), i_folderHandle.Number(), address); err != 0) return err;
    Handle listener{NewSocket()};
    if (!listener) return errno;
    ::fchmod(listener.Number(), 0600);   // bind makes the file with the socket's own mode
    if (const int err = Bind(listener.Number(), address); err != 0) return err;
    if (::chmod(SocketFile().c_str(), 0600) != 0) return errno;
    if (::listen(listener.Number(), 16) != 0) return errno;
    i_listener = std::move(listener);
    return 0;
}

CSecondInstance::Role CSecondInstance::Start(std::string_view text) {
    i_errnoL = E2BIG;
    if (text.size() > kText_MaxBytes) return Role::kFailed;
    i_errnoL = MakeFolder();
    if (i_errnoL != 0) return Role::kFailed;
    i_folderHandle = Handle{::open(i_folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    if (!i_folderHandle) {
        i_errnoL = errno;
        return Role::kFailed;
    }
    for (int tries = 0; tries < static_cast<int>(kLeaving_Seconds) * kStart_TriesASecond; ++tries) {
        i_errnoL = TakeLock();
        i_heldB = false;
        if (i_errnoL == 0) {
            i_errnoL = OpenSocket();
            if (i_errnoL == 0) return Role::kFirst;
            i_lock.Close();   // no socket, no first instance
            return Role::kFailed;
        }
        if (i_errnoL != EWOULDBLOCK) return Role::kFailed;
        i_heldB = true;
        i_errnoL = Send(text, CClock::Get().SteadyT() + kSend_Seconds);
        if (i_errnoL == 0) return Role::kSecond;
        // The first may be between its lock and its socket, or just leaving: look again, who is first, until the time
        // is up.
        if (i_errnoL != ENOENT && i_errnoL != ECONNREFUSED && i_errnoL != EPIPE && i_errnoL != ECONNRESET &&
            i_errnoL != EAGAIN)
            return Role::kFailed;
        const struct timespec pause = {0, 1'000'000'000 / kStart_TriesASecond};
        ::nanosleep(&pause, nullptr);
    }
    return Role::kFailed;
}

bool CSecondInstance::IsLocked() const {
    const Handle lock{::open(LockFile().c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW)};
    return lock && ::flock(lock.Number(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

int CSecondInstance::Ask(std::string_view question, std::string& answer) {
    if (question.size() >= kText_MaxBytes) return E2BIG;
    i_folderHandle = Handle{::open(i_folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    if (!i_folderHandle) return errno;
    const int err = Send(kQuestion + std::string(question), CClock::Get().SteadyT() + kSend_Seconds, &answer);
    const bool nobodyB = err == ENOENT || err == ECONNREFUSED;
    return nobodyB ? (IsLocked() ? EBUSY : ENOENT) : err;
}

int CSecondInstance::Send(std::string_view text, double untilT, std::string* answerP) const {
    struct sockaddr_un address;
    if (const int err = Address(SocketFile(), i_folderHandle.Number(), address); err != 0) return err;
    const Handle connection{NewSocket()};
    if (!connection) return errno;
    if (::connect(connection.Number(), reinterpret_cast<const struct sockaddr*>(&address), sizeof address) != 0)
        return errno;
    if (!OfThisUser(connection.Number())) return EACCES;
    const Line line{connection.Number(), untilT};
    if (const int err = SendAll(line, LengthOf(text) + std::string(text)); err != 0) return err;
    char answer = 0;
    if (const int err = ReceiveAll(line, &answer, 1); err != 0) return err;
    if (answer != static_cast<char>(kTaken)) return EPROTO;
    return answerP == nullptr ? 0 : ReceiveText(line, *answerP, kAnswer_MaxBytes);
}

void CSecondInstance::Listen(Received received, Asked asked) {
    if (!i_listener || i_thread.joinable()) return;
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        i_errnoL = errno;
        return;
    }
    i_stopRead = Handle{ends[0]};
    i_stopWrite = Handle{ends[1]};
    i_received = std::move(received);
    i_asked = std::move(asked);
    i_thread = std::thread(&CSecondInstance::Serve, this);
}

void CSecondInstance::StopListening() {
    i_stopWrite.Close();
    if (i_thread.joinable()) i_thread.join();
    if (i_listener) ::unlink(SocketFile().c_str());   // while the lock is still ours
    i_listener.Close();
}

void CSecondInstance::Serve() {
    for (;;) {
        struct pollfd both[2] = {{i_listener.Number(), POLLIN, 0}, {i_stopRead.Number(), POLLIN, 0}};
        if (::poll(both, 2, -1) < 0 && errno != EINTR) return;
        if (both[1].revents != 0) return;
        if (both[0].revents == 0) continue;
        const Handle connection{::accept4(i_listener.Number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)};
        if (!connection) {
            // Out of handles: the connection stays in the queue, and polling would spin.
            const struct timespec pause = {0, 50'000'000};
            if (errno == EMFILE || errno == ENFILE || errno == ENOMEM) ::nanosleep(&pause, nullptr);
            continue;
        }
        std::string text;
        if (Receive(connection.Number(), text) && !text.starts_with(kQuestion)) i_received(std::move(text));
    }
}

bool CSecondInstance::Receive(int connection, std::string& text) const {
    Line line{connection, CClock::Get().SteadyT() + kReceive_Seconds, i_stopRead.Number()};
    if (!OfThisUser(connection) || ReceiveText(line, text, kText_MaxBytes) != 0) return false;
    // A plain text is answered before it is acted upon: the sender must not wait for an import.
    std::string answer(1, static_cast<char>(kTaken));
    if (text.starts_with(kQuestion)) {
        const std::string told = i_asked ? i_asked(std::string_view(text).substr(1)) : std::string();
        if (told.size() > kAnswer_MaxBytes) return false;
        answer += LengthOf(told) + told;
    }
    line.untilT = CClock::Get().SteadyT() + kReceive_Seconds;
    return SendAll(line, answer) == 0;
}
