#include "Actor.h"

namespace tessly {

Actor::Actor(std::unique_ptr<Executor> executor)
    : m_executor(std::move(executor))
{
}

Actor::~Actor() = default;

} // namespace tessly
