#ifndef LINK_H
#define LINK_H

#include "event_queue.h"
#include "protocol.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace devlink {

/// One connection of a client to the daemon, from the attempt to its end; it is never opened twice.
///
/// There is no thread behind it. Of the callers that wait for something, one reads the socket, for all of
/// them, and the others wait until it has found something (see waitFor). So an event meets the thread that
/// asked for it with no change of threads, and an idle link costs nothing. All operations may be called from
/// any thread; whoever calls holds the link alive.
class Link {
public:
  Link();
  /// Waits for the end of a read that close() has left, kLastReadTimeout at most.
  ~Link();
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;

  /// Connects, and exchanges greetings. Gives false after kOpenTimeout at the latest.
  bool open(std::uint16_t port, const std::string& clientName);
  bool isOpening();
  /// Waits for another thread's open().
  bool awaitOpen();
  /// Ends the connection and whatever waits for it. Events that nobody has fetched are gone.
  void close();
  /// The same for the moment at which the library is unloaded, when a thread may have been ended by force
  /// with the lock in its hands: gives up rather than wait.
  void closeIfUnlocked();

  /// True while the link is up, and afterwards while there are events left that came before it broke.
  bool canFetch();

  /// Waits for an event; false once there will be none.
  bool fetch(Event& event);

  /// Asks the daemon and waits for its answer, kRequestTimeout at most.
  /// addArguments  appends to the question what follows its number
  /// answer        gets the payload behind the number
  bool ask(Kind question, const std::function<void(FrameWriter&)>& addArguments, Kind answerKind,
           Bytes& answer);

private:
  using Clock = std::chrono::steady_clock;
  using Lock = std::unique_lock<std::mutex>;
  enum class State { opening, up, down };

  /// A question under way; lives on the stack of the one who asks.
  struct Question {
    std::uint32_t mNumber;
    Kind mAnswerKind;
    Bytes* mAnswerP;
    bool mIsAnswered;
  };

  // All of these with mMutex held.
  template <class IsDone> bool waitFor(Lock& lock, Clock::time_point deadline, IsDone isDone);
  template <class Run> void readSocket(Lock& lock, Run run);
  void onConnected(const std::string& clientName);
  void armRead();
  void onRead(std::size_t got, std::size_t size);
  bool takeFrames();
  bool takeFrame(const Frame& frame);
  bool takeAnswer(const Frame& frame);
  bool send(const Bytes& bytes);
  void drop();

  std::mutex mMutex;
  std::condition_variable mWoken;
  bool mHasReader = false; ///< a caller is in mIo
  State mState = State::opening;
  bool mIsClosed = false;
  bool mIsConnected = false;
  bool mIsReading = false; ///< a read of the socket is under way, whoever waits for it
  std::uint32_t mLastQuestion = 0;
  std::vector<Question*> mQuestions;
  EventQueue mEvents;
  FrameBuffer mIn;

  asio::io_context mIo;
  asio::executor_work_guard<asio::io_context::executor_type> mStaysReady;
  asio::ip::tcp::socket mSocket;
};

} // namespace devlink

#endif
