#pragma once
// ThreadSanitizer and Qt 5's events, in builds with ThreadSanitizer only.
//
// Qt is not instrumented, and Qt 5 posts events under its own futex-based mutex, which
// ThreadSanitizer cannot see: whatever a thread wrote before it posted an event (a queued
// signal's arguments, an invoked functor, a deferred delete, a thread's end) looks
// unordered with the event's delivery on the receiving thread, and every queued hand-off
// of the code under test would be reported as a race. These hooks teach ThreadSanitizer
// that one ordering, which Qt guarantees: every block a thread other than the main one
// allocates is released as it is allocated, and every event is acquired as it is
// delivered; an event is allocated after everything its poster did before posting it.
// Nothing else is ordered: memory shared without a lock or an event is still reported.
void orderQtEventsForThreadSanitizer();
