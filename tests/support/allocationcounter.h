#pragma once

// Counts the program's heap allocations through replaced global operators new and delete.
//
// Link allocationcounter.cpp into exactly one program (a test or a benchmark): it replaces
// every form of new and delete (plain, array, nothrow, sized, aligned) so that memory taken
// by one form is always given back through the matching one, as AddressSanitizer checks.

namespace zelkotest {

/// Allocations made through operator new since the program started (all threads).
long long heapAllocations();

/// Counts the allocations made while it lives.
class AllocationScope
{
public:
    AllocationScope();
    long long count() const;

private:
    long long m_start;
};

} // namespace zelkotest
