#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>

namespace host {

/// Base of everything that is shared by intrusive reference counts: rows, nodes, header rows,
/// project and lock references. Starts at zero; the last `boost::intrusive_ptr` deletes the object.
/// UI thread only: the count is not atomic.
class RefCounted : public boost::intrusive_ref_counter<RefCounted, boost::thread_unsafe_counter> {
public:
    RefCounted() = default;
    RefCounted(const RefCounted&) = delete;
    RefCounted& operator=(const RefCounted&) = delete;
    virtual ~RefCounted() = default;
};

template <class T>
using RefPtr = boost::intrusive_ptr<T>;

}  // namespace host
