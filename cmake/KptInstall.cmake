# Placeholder until the library's targets exist.
