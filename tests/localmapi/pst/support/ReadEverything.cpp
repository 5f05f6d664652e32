#include "tests/localmapi/pst/support/ReadEverything.h"

#include "localmapi/pst/ltp/Values.h"

#include <array>

namespace localmapi::testing {

namespace {

class Reader {
public:
    Reader(pst::Store& store, std::uint64_t bytesPerValue) : m_store(store), m_bytesPerValue(bytesPerValue) {}

    Everything Run() {
        if (m_store.Properties() != nullptr) {
            ReadProperties(*m_store.Properties());
        }
        static_cast<void>(m_store.LoadNames());
        m_store.ReceiveFolders();
        m_store.Find(pst::SpecialFolder::IpmSubtree);
        m_store.WalkFolders(pst::Store::kRootFolder, pst::SearchFolders::Include,
                            [this](pst::Folder& folder, unsigned) {
                                ReadFolder(folder);
                                return true;
                            });
        return m_found;
    }

private:
    void ReadFolder(pst::Folder& folder) {
        if (!folder.DisplayName().empty()) {
            m_found.folders.insert(folder.Id().value);
        }
        for (pst::ItemList list : {folder.Messages(), folder.AssociatedMessages()}) {
            for (std::size_t i = 0; i < list.Count(); ++i) {
                ++m_found.listed;
                for (const pst::TableContext::Column& column : list.Columns()) {
                    ReadValue(list.Cell(i, column.id));
                }
                Result<pst::Message> message = m_store.OpenMessage(list.Id(i));
                if (Opened(message)) {
                    m_found.messages.insert(list.Id(i).value);
                    ReadMessage(*message);
                }
            }
        }
    }

    void ReadMessage(pst::Message& message) {
        ReadProperties(message.Properties());
        if (Result<pst::TableContext> recipients = message.OpenRecipients()) {
            for (std::size_t row = 0; row < recipients->RowCount(); ++row) {
                for (const pst::TableContext::Column& column : recipients->Columns()) {
                    ReadValue(recipients->Cell(row, column.id));
                }
            }
        }
        for (const pst::NodeId id : message.Attachments()) {
            Result<pst::Attachment> attachment = message.OpenAttachment(id);
            if (!Opened(attachment)) {
                continue;
            }
            ++m_found.attachments;
            ReadProperties(attachment->Properties());
            if (Result<pst::ValueStream> data = attachment->OpenData()) {
                ReadStream(*data);
            }
            if (Result<pst::Message> inner = attachment->OpenMessage()) {
                ReadMessage(*inner);
            }
        }
    }

    void ReadProperties(pst::PropertyContext& properties) {
        for (const pst::PropertyContext::Record& record : properties.Records()) {
            ReadValue(properties.Read(record));
        }
    }

    void ReadValue(Result<pst::PropertyValue> value) {
        if (!Opened(value)) {
            return;
        }
        ReadStream(value->bytes);
        pst::Integer(*value);
        (void)pst::Text(*value, 1252);
        if (pst::IsMultiple(value->type)) {
            if (Result<Bytes> bytes = value->bytes.ReadAll(1 << 20)) {
                const auto list = pst::ValueList::Parse(value->type, *std::move(bytes));
                for (std::size_t i = 0; list && i < list->Count(); ++i) {
                    m_found.bytes += list->At(i).Size();
                }
            }
        }
    }

    void ReadStream(pst::ValueStream& stream) {
        std::array<std::byte, 4000> piece;
        for (std::uint64_t at = 0; at < m_bytesPerValue;) {
            const Result<std::size_t> got = stream.ReadAt(at, piece);
            if (!Opened(got) || *got == 0) {
                break;
            }
            at += *got;
            m_found.bytes += *got;
        }
    }

    template <class T>
    bool Opened(const Result<T>& result) {
        m_found.errors += result || result.IsNotFound() ? 0 : 1;
        return static_cast<bool>(result);
    }

    pst::Store& m_store;
    std::uint64_t m_bytesPerValue;
    Everything m_found;
};

}  // namespace

Everything ReadEverything(pst::Store& store, std::uint64_t bytesPerValue) {
    return Reader(store, bytesPerValue).Run();
}

}  // namespace localmapi::testing
