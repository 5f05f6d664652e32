// What a record costs at the boundary: an e-mail's fields set and handed over, read back as the host would, copied whole;
// and how much of that is the texts' round trip through UTF-8.
#include "platform/SafeArray.h"
#include "platform/Variant.h"
#include "platform/WideText.h"
#include "provider/ExchObjectData.h"
#include "provider/URIObjectData.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>

namespace {

// The fields of an e-mail's record (index 19 to 43 and the common ones), texts of the usual lengths.
void Fill(CExchObjectData& record, const CStringW& body) {
    static const CStringW address = "First Last <first.last@mail.example.com>"_w;
    for (const RecordField& field : kItemFields) {
        if (field.index >= "contacts_sAssistant"_field) {
            break;
        }
        switch (field.type) {
            case 'S': record.SetStringFieldVal(field.index, address, true); break;
            case 'I': record.SetIntFieldVal(field.index, 1, true); break;
            case 'L': record.SetLongLongFieldVal(field.index, 1, true); break;
            case 'B': record.SetBooleanFieldVal(field.index, true, true); break;
            default: break;
        }
    }
    record.SetStringFieldVal("email_sBody"_field, body, false);
}

void FillAndHandOver(benchmark::State& state) {
    const CStringW body(static_cast<std::size_t>(state.range(0)), 'x');
    for ([[maybe_unused]] auto _ : state) {
        CExchObjectData record;
        Fill(record, body);
        VARIANT host;
        record.Dettach(&host);
        benchmark::DoNotOptimize(host.parray);
        VariantClear(&host);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * state.range(0) * static_cast<std::int64_t>(sizeof(WCHAR)));
}
BENCHMARK(FillAndHandOver)->ArgName("body")->Arg(0)->Arg(4'000)->Arg(1'000'000);

// The same fields without the classes: what the arrays and texts alone take.
void FillAnArrayByHand(benchmark::State& state) {
    CExchObjectData model;
    Fill(model, CStringW());
    for ([[maybe_unused]] auto _ : state) {
        VARIANT host;
        VariantInit(&host);
        host.vt = VT_ARRAY | VT_VARIANT;
        host.parray = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(kItemFields.size()));
        auto* elements = static_cast<VARIANT*>(host.parray->pvData);
        for (std::size_t i = 0; i < kItemFields.size(); ++i) {
            if (model.IsFieldSet(i)) {
                VariantCopy(&elements[i], model.GetData(i));
            }
        }
        benchmark::DoNotOptimize(host.parray);
        VariantClear(&host);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(FillAnArrayByHand);

void ReadEveryField(benchmark::State& state) {
    CExchObjectData filled;
    Fill(filled, CStringW(4'000, 'x'));
    VARIANT host;
    filled.Dettach(&host);
    for ([[maybe_unused]] auto _ : state) {
        const CExchObjectData record(&host);
        for (std::size_t i = 0; i < record.GetSize(); ++i) {
            if (record.GetDataType(i) == CExchObject::eDataString) {
                benchmark::DoNotOptimize(record.GetStringFieldVal(i));
            } else {
                benchmark::DoNotOptimize(record.GetLongLongFieldVal(i));
            }
        }
    }
    VariantClear(&host);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ReadEveryField);

void MakeAListOfUris(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const CStringW id(140, 'A');  // an entry id in hexadecimal
    for ([[maybe_unused]] auto _ : state) {
        CArrayObjectData list(count);
        for (std::size_t i = 0; i < count; ++i) {
            CURIObjectData uri(eUriItem, "Outlook"_w, id, id, 1, true, id, CStringW(), eVxItemEmail);
            VARIANT element;
            uri.Dettach(&element);
            list.SetVariantFieldVal(i, &element, true);
        }
        benchmark::DoNotOptimize(list.GetData(0));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(MakeAListOfUris)->ArgName("uris")->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

void CopyAList(benchmark::State& state) {
    CArrayObjectData list(static_cast<std::size_t>(state.range(0)));
    for (std::size_t i = 0; i < list.GetSize(); ++i) {
        CURIObjectData uri(eUriItem, "Outlook"_w, CStringW(140, 'A'), CStringW(), 1, true, CStringW(), CStringW(),
                           eVxItemEmail);
        VARIANT element;
        uri.Dettach(&element);
        list.SetVariantFieldVal(i, &element, true);
    }
    for ([[maybe_unused]] auto _ : state) {
        CArrayObjectData copy(list);
        benchmark::DoNotOptimize(copy.GetData(0));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(CopyAList)->ArgName("uris")->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

}  // namespace
