// Columns that are filled from a message's headers and properties.
#pragma once

#include "host/configuration/Settings.h"
#include "host/connection/Delivery.h"
#include "host/toolkit/RowType.h"

namespace host {

class EnvelopeFields {
public:
    // `streamType`: of the rows with these columns; it stays with the caller, as do the settings.
    EnvelopeFields(const Settings& settings, const RowType& streamType);

    // Completes the batch's rows; one with a value that its column cannot hold becomes a reject.
    void fill(Batch& batch, Delivery& delivery) const;

private:
    // Sets the value of the text; "" when it could.
    std::string faultOf(const EnvelopeColumn& column, const std::string& text, Value& value) const;

    const Settings& settings_;
    const RowType& streamType_;
    const TemporalFormats formats_;
};

}  // namespace host
