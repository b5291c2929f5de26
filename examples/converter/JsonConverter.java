package com.morvex.kel.examples;

import com.fasterxml.jackson.core.JsonFactory;
import com.fasterxml.jackson.core.JsonGenerator;
import com.fasterxml.jackson.core.JsonParser;
import com.fasterxml.jackson.core.JsonToken;
import com.morvex.kel.connectors.MessageConverter;
import java.io.IOException;
import java.io.StringWriter;
import java.util.Arrays;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import javax.jms.JMSException;
import javax.jms.Message;
import javax.jms.Session;
import javax.jms.TextMessage;

/**
 * Rows as JSON texts, such as {"stream":"Trades","op":"i","Symbol":"IBM","Shares":100}.
 *
 * <p>The parameter lists the columns: "Symbol,Shares". A member may be missing or null, which is a null
 * field; one that is no column is an error, so that a misspelt name is not lost in silence. Without "stream"
 * the message is for the stream that reads, without "op" it is an upsert.
 */
public final class JsonConverter implements MessageConverter {
    private static final List<String> PREFIX = List.of("stream", "op");

    private final JsonFactory json = new JsonFactory().enable(JsonParser.Feature.STRICT_DUPLICATE_DETECTION);

    /** The members in the order of a row's elements, and the element of each member. */
    private String[] members;
    private final Map<String, Integer> elements = new HashMap<>();

    @Override
    public void init(String parameter) {
        String columns = parameter.strip();
        if (columns.isEmpty()) throw new IllegalArgumentException("it must list the columns, such as Symbol,Shares");
        members = (String.join(",", PREFIX) + "," + columns).split("\\s*,\\s*", -1);
        for (String member : members) {
            if (member.isEmpty()) throw new IllegalArgumentException("a column has no name");
            if (elements.put(member, elements.size()) != null) {
                throw new IllegalArgumentException("the name \"" + member + "\" stands twice");
            }
        }
    }

    @Override
    public String[] toRow(Message message) throws JMSException, IOException {
        if (!(message instanceof TextMessage text)) throw new IOException("only text messages hold JSON");
        if (text.getText() == null) throw new IOException("the body is empty");
        String[] row = new String[members.length];
        try (JsonParser parser = json.createParser(text.getText())) {
            if (parser.nextToken() != JsonToken.START_OBJECT) throw new IOException("the text is no JSON object");
            while (parser.nextToken() == JsonToken.FIELD_NAME) {
                String member = parser.getCurrentName();
                Integer element = elements.get(member);
                if (element == null) {
                    throw new IOException("the member \"" + member + "\" is none of " + Arrays.toString(members));
                }
                JsonToken value = parser.nextToken();
                if (!value.isScalarValue()) throw new IOException("the member \"" + member + "\" is no single value");
                row[element] = value == JsonToken.VALUE_NULL ? null : parser.getText();
            }
            if (parser.nextToken() != null) throw new IOException("something follows the JSON object");
        }
        return row;
    }

    @Override
    public Message toMessage(String[] row, Session session) throws JMSException, IOException {
        if (row.length != members.length) {
            throw new IOException("the row has " + row.length + " elements instead of " + members.length);
        }
        StringWriter text = new StringWriter();
        try (JsonGenerator generator = json.createGenerator(text)) {
            generator.writeStartObject();
            for (int i = 0; i < row.length; ++i) {
                if (row[i] != null) generator.writeStringField(members[i], row[i]);
            }
            generator.writeEndObject();
        }
        return session.createTextMessage(text.toString());
    }
}
