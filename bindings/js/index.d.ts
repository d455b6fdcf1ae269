export type JSONValue = null | boolean | number | string | JSONValue[] | { [key: string]: JSONValue };

export interface Field {
  name: string;
  parsed: JSONValue;
  rawString: string;
  /** Present only when the field has issues. */
  issues?: string[];
}

export interface Success {
  ok: true;
  fields: Field[];
  warnings: string[];
}

export interface Failure {
  ok: false;
  error: { message: string; code: number; additionalInfo: { [key: string]: string } };
}

export function parse(format: string, data: string | Uint8Array,
                      options?: string | { [key: string]: JSONValue } | null): Success | Failure;
export function formats(): string[];
