#include "semaphore_faults.h"

#include <atomic>
#include <cerrno>

#include <semaphore.h>

namespace {

struct Order {
  std::atomic<int> mTimes{0};
  int mError = 0;
};

Order gOrders[semaphore_faults::Count];

bool isToFail(semaphore_faults::Call call) {
  Order& order = gOrders[call];
  if (order.mTimes == 0)
    return false;
  --order.mTimes;
  errno = order.mError;
  return true;
}

} // namespace

void semaphore_faults::order(Call call, int error, int times) {
  gOrders[call].mError = error;
  gOrders[call].mTimes = times;
}

extern "C" {
int __real_sem_init(sem_t* semaphore, int isShared, unsigned value);
int __real_sem_destroy(sem_t* semaphore);
int __real_sem_wait(sem_t* semaphore);
int __real_sem_post(sem_t* semaphore);

int __wrap_sem_init(sem_t* semaphore, int isShared, unsigned value);
int __wrap_sem_destroy(sem_t* semaphore);
int __wrap_sem_wait(sem_t* semaphore);
int __wrap_sem_post(sem_t* semaphore);

int __wrap_sem_init(sem_t* semaphore, int isShared, unsigned value) {
  return isToFail(semaphore_faults::Init) ? -1 : __real_sem_init(semaphore, isShared, value);
}
int __wrap_sem_destroy(sem_t* semaphore) {
  return isToFail(semaphore_faults::Destroy) ? -1 : __real_sem_destroy(semaphore);
}
int __wrap_sem_wait(sem_t* semaphore) {
  return isToFail(semaphore_faults::Wait) ? -1 : __real_sem_wait(semaphore);
}
int __wrap_sem_post(sem_t* semaphore) {
  return isToFail(semaphore_faults::Post) ? -1 : __real_sem_post(semaphore);
}
}
