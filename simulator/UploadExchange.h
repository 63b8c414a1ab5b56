#pragma once

#include "simulator/HttpServer.h"
#include "simulator/PanelState.h"
#include "simulator/UploadFile.h"

#include <QCryptographicHash>

#include <memory>
#include <optional>
#include <string>

struct MHD_PostProcessor;

namespace companion::simulator {

class EventLog;

/// One upload: a multipart/form-data body (RFC 7578) with one file part, called "my-file".
class UploadExchange : public Exchange {
public:
    UploadExchange(const Request& request, PanelState& state, EventLog& log, const std::string& folder);
    ~UploadExchange() override;

    Outcome headArrived() override;
    Outcome bodyArrived(std::string_view data, std::size_t& used) override;
    Outcome requestComplete() override;

    /// A piece of a part, at `offset` of it: called by the multipart parser.
    void partArrived(const char* field, const char* fileName, const char* contentType, std::string_view data,
        std::uint64_t offset);

private:
    bool isAnotherFile(const char* fileName) const;
    void beginFile(const char* fileName, const char* contentType);
    void process(std::string_view data);
    void store();
    void finishBody();
    std::string offeredName() const;
    std::optional<Answer> refusal() const;
    Outcome chosenAnswer() const;

    const Request& m_request;
    PanelState& m_state;
    EventLog& m_log;
    const std::string m_folder;
    const UploadMode m_mode;
    MHD_PostProcessor* m_parser = nullptr;
    std::unique_ptr<UploadFile> m_file;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
    UploadRecord m_record;
    std::string m_firstBytes; ///< as many as tell a picture
    std::string m_badRequest; ///< what is wrong with the body, "" when nothing is
    std::string m_storageProblem;
    bool m_isBodyFinished = false;
};

} // namespace companion::simulator
