#ifndef SEMAPHORE_FAULTS_H
#define SEMAPHORE_FAULTS_H

/// Semaphore calls that fail on order. Without an order they reach the system.
namespace semaphore_faults {

enum Call { Init, Destroy, Wait, Post, Count };

/// The next times calls give -1, with this error number, and do nothing.
void order(Call call, int error, int times);

} // namespace semaphore_faults

#endif
