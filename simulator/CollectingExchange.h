#pragma once

#include "simulator/HttpServer.h"

#include <functional>
#include <string>

namespace companion::simulator {

/// Collects a body of limited size; what is done with it is the derived class's.
class CollectingExchange : public Exchange {
public:
    static constexpr std::size_t maxBody = 1024 * 1024;

    explicit CollectingExchange(const Request& request);

    Outcome headArrived() override;
    Outcome bodyArrived(std::string_view data, std::size_t& used) override;
    Outcome requestComplete() final;

protected:
    const Request& request() const { return m_request; }
    const std::string& body() const { return m_body; }

    /// Called again after each Wait.
    virtual Outcome answer() = 0;

private:
    const Request& m_request;
    std::string m_body;
    std::size_t m_size = 0;
};

/// The same answer to whatever the body is, before it is read.
class FixedExchange : public Exchange {
public:
    explicit FixedExchange(Answer answer);

    Outcome headArrived() override { return m_answer; }
    Outcome bodyArrived(std::string_view, std::size_t&) override { return HangUp(); }
    Outcome requestComplete() override { return m_answer; }

private:
    Answer m_answer;
};

/// For a path that there is, asked for with another method; `allowed` is the right one.
std::unique_ptr<Exchange> wrongMethod(const std::string& allowed);
std::unique_ptr<Exchange> unknownPath(const Request& request);

} // namespace companion::simulator
