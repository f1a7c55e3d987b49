export { catalogue, isSetting } from './catalogue.js';
export type { ChoiceValue, Kind, Setting, SettingKey, ValueOf } from './catalogue.js';
export { connect } from './client.js';
export type { Change, Client, NewValue, Observer, Options, Status } from './client.js';
export { Connection } from './connection.js';
export type { ConnectionObserver, Environment } from './connection.js';
export type { ChangeEvent, Outcome, Reason, Values } from './frames.js';
export { messageType } from './messageTypes.js';
