"""Validates JSON against a schema, with the keywords that the schemas in docs/ use. Unknown keywords are an error, so
that none is ignored."""

import re

KNOWN = {"$schema", "title", "definitions", "$ref", "type", "properties", "required", "additionalProperties", "items",
         "enum", "const", "oneOf", "minimum", "maximum", "pattern", "minItems", "maxItems"}


def is_type(value, name):
    if name in ("integer", "number"):
        kinds = (int,) if name == "integer" else (int, float)
        return isinstance(value, kinds) and not isinstance(value, bool)
    return isinstance(value, {"object": dict, "array": list, "string": str, "boolean": bool, "null": type(None)}[name])


def simple_faults(value, schema, place):
    types = schema.get("type", [])
    types = [types] if isinstance(types, str) else types
    if types and not any(is_type(value, name) for name in types):
        yield "%s is not of type %s" % (place, " or ".join(types))
    if "const" in schema and value != schema["const"]:
        yield "%s is not %r" % (place, schema["const"])
    if "enum" in schema and value not in schema["enum"]:
        yield "%s is not one of %r" % (place, schema["enum"])
    if is_type(value, "number") and not schema.get("minimum", value) <= value <= schema.get("maximum", value):
        yield "%s is out of range" % place
    if isinstance(value, str) and not re.search(schema.get("pattern", ""), value):
        yield "%s does not match %s" % (place, schema["pattern"])


def faults(value, schema, whole=None, place="it"):
    """Yields every violation of the schema."""
    whole = whole or schema
    assert set(schema) <= KNOWN, "unknown keywords %s" % (set(schema) - KNOWN)
    if "$ref" in schema:
        yield from faults(value, whole["definitions"][schema["$ref"].split("/")[-1]], whole, place)
        return
    yield from simple_faults(value, schema, place)
    if "oneOf" in schema:
        fitting = [one for one in schema["oneOf"] if not list(faults(value, one, whole, place))]
        if len(fitting) != 1:
            yield "%s matches %d of the alternatives" % (place, len(fitting))
    if isinstance(value, list):
        if not schema.get("minItems", 0) <= len(value) <= schema.get("maxItems", len(value)):
            yield "%s has %d items" % (place, len(value))
        for position, item in enumerate(value):
            yield from faults(item, schema.get("items", {}), whole, "%s[%d]" % (place, position))
    if isinstance(value, dict):
        yield from (place + " has no " + name for name in schema.get("required", []) if name not in value)
        others = schema.get("additionalProperties", {})
        for name, inner in value.items():
            rule = schema.get("properties", {}).get(name, others)
            if rule is False:
                yield "%s has an unknown field %s" % (place, name)
            else:
                yield from faults(inner, rule, whole, place + "." + name)
