// Placeholder: filled in with the format.
namespace parser {}
