#include "link.h"

#include <asio/buffer.hpp>
#include <asio/post.hpp>

#include <algorithm>

namespace devlink {

namespace {

using asio::ip::tcp;
using std::chrono::milliseconds;

constexpr milliseconds kOpenTimeout{1000};
constexpr milliseconds kRequestTimeout{500};
/// Ends of reads are found at once. Where one isn't, closing the socket has to end it.
constexpr milliseconds kLastReadTimeout{500};

/// Small, so that old motion samples don't pile up in the system where they can't be overwritten.
constexpr int kReceiveBufferBytes = 64 * 1024;

/// Events at which a fetch no longer looks whether the socket has newer motion: the flood has to go out
/// first.
constexpr std::size_t kEnoughEvents = 1024;
/// Buffers that one turn takes from the socket at most, so that a flood can't keep a caller inside.
constexpr int kMaxReadsPerTurn = 4;

/// Bytes of an answer behind the question's number.
std::size_t answerBytes(Kind kind) {
  constexpr std::size_t kStatusBytes = 4;
  return kind == Kind::info       ? kStatusBytes + kInfoBytes
         : kind == Kind::settings ? kStatusBytes + kSettingsBytes
                                  : kStatusBytes; // a device count is as long as a status
}

constexpr auto kForever = std::chrono::steady_clock::time_point::max();

} // namespace

Link::Link() : mStaysReady(asio::make_work_guard(mIo)), mSocket(mIo) {}

/// By now no call is under way any more. Only a link that has ended may be waited for: one that is closed by
/// force, at unload, goes with its socket.
Link::~Link() {
  try {
    const Clock::time_point deadline = Clock::now() + kLastReadTimeout;
    while (mState == State::down && mIsReading && mIo.run_one_until(deadline) > 0) {
    }
  } catch (...) { // the socket goes with its read, then
  }
}

bool Link::open(std::uint16_t port, const std::string& clientName) {
  Lock lock(mMutex);
  if (mState != State::opening)
    return false; // closed before it was open
  asio::error_code failure;
  mSocket.open(tcp::v4(), failure);
  if (!failure)
    mSocket.set_option(asio::socket_base::receive_buffer_size(kReceiveBufferBytes), failure);
  if (failure) {
    drop();
    return false;
  }
  mSocket.async_connect(tcp::endpoint(asio::ip::address_v4::loopback(), port),
                        [this, clientName](const asio::error_code& error) {
                          const Lock handlerLock(mMutex);
                          if (error || mState != State::opening)
                            drop();
                          else
                            onConnected(clientName);
                        });
  if (!waitFor(lock, Clock::now() + kOpenTimeout, [this] { return mState != State::opening; }))
    drop();
  return mState == State::up;
}

bool Link::awaitOpen() {
  Lock lock(mMutex);
  waitFor(lock, Clock::now() + kOpenTimeout, [this] { return mState != State::opening; });
  return mState == State::up;
}

void Link::close() {
  const Lock lock(mMutex);
  mIsClosed = true;
  mEvents.clear();
  drop();
}

void Link::closeIfUnlocked() {
  const Lock lock(mMutex, std::try_to_lock);
  if (!lock.owns_lock())
    return;
  mIsClosed = true;
  drop();
}

bool Link::canFetch() {
  const Lock lock(mMutex);
  return mState == State::up || !mEvents.isEmpty();
}

bool Link::isOpening() {
  const Lock lock(mMutex);
  return mState == State::opening;
}

bool Link::fetch(Event& event) {
  Lock lock(mMutex);
  if (mState == State::up && mEvents.hasMotion() && mEvents.size() < kEnoughEvents && !mHasReader)
    readSocket(lock, [this] { mIo.poll_one(); }); // a newer sample may wait in the socket
  waitFor(lock, kForever, [this] { return !mEvents.isEmpty() || mState != State::up; });
  return !mIsClosed && mEvents.take(event);
}

bool Link::ask(Kind questionKind, const std::function<void(FrameWriter&)>& addArguments, Kind answerKind,
               Bytes& answer) {
  Lock lock(mMutex);
  if (mState != State::up)
    return false;
  Question question{++mLastQuestion, answerKind, &answer, false};
  Bytes bytes;
  {
    FrameWriter frame(bytes, questionKind);
    frame.number32(question.mNumber);
    addArguments(frame);
  }
  mQuestions.push_back(&question);
  if (!send(bytes))
    drop();
  waitFor(lock, Clock::now() + kRequestTimeout, [&] { return question.mIsAnswered || mState != State::up; });
  mQuestions.erase(std::find(mQuestions.begin(), mQuestions.end(), &question));
  return question.mIsAnswered;
}

/// Waits until isDone(), which is asked with the lock held; false at the deadline. The first caller who waits
/// reads the socket; when it has found anything, all look whether it was for them, and one of those who go on
/// waiting reads next.
template <class IsDone> bool Link::waitFor(Lock& lock, Clock::time_point deadline, IsDone isDone) {
  while (!isDone()) {
    if (deadline != kForever && Clock::now() >= deadline)
      return false;
    if (!mHasReader) {
      readSocket(lock, [&] {
        if (deadline == kForever)
          mIo.run_one();
        else
          mIo.run_one_until(deadline);
      });
    } else if (deadline == kForever) {
      mWoken.wait(lock);
    } else {
      mWoken.wait_until(lock, deadline);
    }
  }
  return true;
}

/// Runs the socket's operations, without the lock; their handlers take it. A read begins here and not as soon
/// as the one before has ended: the event that came with that one is on its way first.
template <class Run> void Link::readSocket(Lock& lock, Run run) {
  mHasReader = true;
  bool isFailed = false;
  try {
    if (mIsConnected && !mIsReading && mState != State::down)
      armRead();
    lock.unlock();
    run();
  } catch (...) {
    isFailed = true; // out of memory: this link is over
  }
  if (!lock.owns_lock())
    lock.lock();
  if (isFailed)
    drop();
  mHasReader = false;
  mWoken.notify_all();
}

void Link::onConnected(const std::string& clientName) {
  asio::error_code failure;
  mSocket.set_option(tcp::no_delay(true), failure);
  if (!failure)
    mSocket.non_blocking(true, failure);
  Bytes hello;
  FrameWriter(hello, Kind::hello).number32(kMagic).number16(kVersion).text(clientName);
  if (failure || !send(hello))
    drop();
  else
    mIsConnected = true;
}

void Link::armRead() {
  std::size_t size = 0;
  std::uint8_t* room = mIn.room(size);
  mSocket.async_read_some(asio::buffer(room, size),
                          [this, size](const asio::error_code& error, std::size_t got) {
                            const Lock lock(mMutex);
                            mIsReading = false;
                            asio::error_code ignored;
                            if (mState == State::down)
                              mSocket.close(ignored);
                            else if (error)
                              drop();
                            else
                              onRead(got, size);
                          });
  mIsReading = true; // its handler waits for the lock
}

/// Takes what has come, and what else the socket holds: motion that is about to be overwritten needn't go
/// out.
void Link::onRead(std::size_t got, std::size_t size) {
  for (int reads = 0;; ++reads) {
    mIn.added(got);
    if (!takeFrames())
      return drop();
    // Room is left, so the socket is most likely empty.
    if (got < size || reads == kMaxReadsPerTurn)
      return;
    std::uint8_t* room = mIn.room(size);
    asio::error_code error;
    got = mSocket.read_some(asio::buffer(room, size), error);
    if (error == asio::error::would_block)
      return;
    if (error)
      return drop();
  }
}

bool Link::takeFrames() {
  Frame frame;
  for (;;) {
    switch (mIn.next(frame)) {
    case FrameBuffer::Next::incomplete:
      return true;
    case FrameBuffer::Next::bad:
      return false;
    case FrameBuffer::Next::frame:
      if (!takeFrame(frame))
        return false;
    }
  }
}

/// False if this is no daemon that we can talk to.
bool Link::takeFrame(const Frame& frame) {
  FrameReader payload(frame);
  if (mState == State::opening) {
    const std::uint32_t magic = payload.number32();
    const std::uint16_t version = payload.number16();
    if (frame.mKind != Kind::welcome || !payload.isGood() || magic != kMagic || version != kVersion)
      return false;
    mState = State::up;
    return true;
  }
  switch (frame.mKind) {
  case Kind::motion: {
    Axes axes;
    for (std::int16_t& axis : axes)
      axis = static_cast<std::int16_t>(payload.number16());
    if (!payload.isGood())
      return false;
    mEvents.addMotion(axes);
    return true;
  }
  case Kind::event: {
    const std::int32_t code = payload.signed32();
    return payload.isGood() && code >= 0 && mEvents.add(code);
  }
  case Kind::devices:
  case Kind::info:
  case Kind::settings:
  case Kind::modeTaken:
    return takeAnswer(frame);
  default:
    return false;
  }
}

bool Link::takeAnswer(const Frame& frame) {
  FrameReader payload(frame);
  const std::uint32_t number = payload.number32();
  if (frame.mSize != sizeof number + answerBytes(frame.mKind) || number == 0 || number > mLastQuestion)
    return false;
  const auto question = std::find_if(mQuestions.begin(), mQuestions.end(),
                                     [number](const Question* asked) { return asked->mNumber == number; });
  if (question == mQuestions.end())
    return true; // came too late, nobody waits for it any more
  if ((*question)->mAnswerKind != frame.mKind || (*question)->mIsAnswered)
    return false;
  (*question)->mAnswerP->assign(frame.mPayloadP + sizeof number, frame.mPayloadP + frame.mSize);
  (*question)->mIsAnswered = true;
  return true;
}

/// A daemon that doesn't take even this little hasn't read for long; that counts as failure, not as a wait.
bool Link::send(const Bytes& bytes) {
  asio::error_code error;
  return mSocket.write_some(asio::buffer(bytes), error) == bytes.size() && !error;
}

/// A read that is under way is ended by shutting the socket down, which it finds as the end of the stream:
/// one that another thread has begun may never end when its socket is closed, where overlapped reads are
/// Wine's, and the io_context would wait for it for good. Its handler closes the socket.
void Link::drop() {
  if (mState == State::down)
    return;
  mState = State::down;
  asio::error_code ignored;
  if (mIsReading)
    mSocket.shutdown(tcp::socket::shutdown_both, ignored);
  else
    mSocket.close(ignored);
  mWoken.notify_all();
  asio::post(mIo, [] {}); // frees the caller who reads
}

} // namespace devlink
